#pragma once

#include <QAbstractListModel>

#include <functional>
#include <vector>

namespace vynlex {

/// The rows of a list for its view: records of one type, read through named roles. Main thread.
template<typename Row> class RowModel : public QAbstractListModel {
public:
    struct Role {
        QByteArray name;
        std::function<QVariant(const Row &)> value;
    };

    explicit RowModel(std::vector<Role> roles)
        : m_roles(std::move(roles))
    {
    }

    [[nodiscard]] const std::vector<Row> &rows() const { return m_rows; }

    /// Shows `rows`. As long as their number stays, the view keeps its cells, with their focus and place.
    void setRows(std::vector<Row> rows)
    {
        if (rows.size() != m_rows.size()) {
            beginResetModel();
            m_rows = std::move(rows);
            endResetModel();
            return;
        }
        m_rows.swap(rows);
        for (std::size_t row = 0; row < m_rows.size(); ++row) {
            if (m_rows[row] != rows[row])
                emit dataChanged(index(static_cast<int>(row)), index(static_cast<int>(row)));
        }
    }

    [[nodiscard]] int rowCount(const QModelIndex &parent = {}) const override
    {
        return parent.isValid() ? 0 : static_cast<int>(m_rows.size());
    }

    [[nodiscard]] QVariant data(const QModelIndex &index, int role) const override
    {
        const auto number = static_cast<std::size_t>(role - firstRole);
        if (!index.isValid() || index.row() >= rowCount() || role < firstRole || number >= m_roles.size())
            return {};
        return m_roles[number].value(m_rows[static_cast<std::size_t>(index.row())]);
    }

    [[nodiscard]] QHash<int, QByteArray> roleNames() const override
    {
        QHash<int, QByteArray> names;
        for (std::size_t role = 0; role < m_roles.size(); ++role)
            names.insert(firstRole + static_cast<int>(role), m_roles[role].name);
        return names;
    }

private:
    static constexpr int firstRole = Qt::UserRole;

    std::vector<Role> m_roles;
    std::vector<Row> m_rows;
};

} // namespace vynlex

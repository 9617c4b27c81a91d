#pragma once

#include <QString>
#include <QStringList>

#include <vector>

/// A table for a terminal: a title with the number of rows, then columns as wide as they need.
class Table {
public:
    Table(QString title, QStringList header)
        : m_title(std::move(title))
        , m_rows{std::move(header)}
    {
    }

    void addRow(const QStringList &cells);
    [[nodiscard]] QString text() const;

private:
    QString m_title;
    std::vector<QStringList> m_rows; ///< the header first
};

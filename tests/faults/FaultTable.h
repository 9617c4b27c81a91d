#pragma once

#include <QMap>
#include <QString>
#include <QStringList>

namespace faults {

/// What users see, a line a fault and a column for each thing they do; as it stands in a document.
class FaultTable {
public:
    void set(const QString &fault, const QString &action, const QString &cell);

    [[nodiscard]] QString markdown() const;

    /// Puts itself in place of the document's table. Gives one line when that fails, else nothing.
    [[nodiscard]] QString writeInto(const QString &file) const;
    /// Every cell must end as the document's does. Times are not compared closely: machines are busy. Gives a line for
    /// each cell that differs.
    [[nodiscard]] QString compareWith(const QString &file) const;

private:
    QStringList m_actions; ///< In the order of the first fault.
    QMap<QString, QMap<QString, QString>> m_cells;
};

} // namespace faults

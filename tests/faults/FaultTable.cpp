#include "tests/faults/FaultTable.h"

#include <QFile>

#include "tests/faults/FaultColumn.h"

using namespace Qt::StringLiterals;

namespace faults {
namespace {

constexpr auto head = "| fault |"_L1;

QStringList cellsOf(const QString &line)
{
    QStringList cells;
    for (const QString &cell : line.split(u'|').mid(1))
        cells << cell.trimmed();
    return cells;
}

/// The lines of a document, and which of them are the table.
struct Document {
    QStringList lines;
    qsizetype begin = -1;
    qsizetype end = -1;

    explicit Document(const QString &file)
    {
        QFile document(file);
        if (!document.open(QFile::ReadOnly))
            return;
        lines = QString::fromUtf8(document.readAll()).split(u'\n');
        for (begin = 0; begin < lines.size() && !lines[begin].startsWith(head);)
            ++begin;
        for (end = begin; end < lines.size() && lines[end].startsWith(u'|');)
            ++end;
    }
    [[nodiscard]] bool hasTable() const { return begin >= 0 && begin < end; }
};

} // namespace

void FaultTable::set(const QString &fault, const QString &action, const QString &cell)
{
    if (!m_actions.contains(action))
        m_actions << action;
    m_cells[fault][action] = cell;
}

QString FaultTable::markdown() const
{
    QString text =
        head + u' ' + m_actions.join(u" | "_s) + u" |\n|"_s + u"---|"_s.repeated(m_actions.size() + 1) + u'\n';
    for (const FaultColumn &column : allColumns()) {
        if (!m_cells.contains(column.name))
            continue;
        text += "| "_L1 + column.name;
        for (const QString &action : m_actions)
            text += " | "_L1 + m_cells[column.name].value(action);
        text += " |\n"_L1;
    }
    return text;
}

QString FaultTable::writeInto(const QString &file) const
{
    Document document(file);
    if (!document.hasTable())
        return u"%1 has no table that begins with \"%2\"."_s.arg(file, head);
    const QStringList lines =
        document.lines.mid(0, document.begin) + markdown().trimmed().split(u'\n') + document.lines.mid(document.end);
    QFile target(file);
    if (!target.open(QFile::WriteOnly) || target.write(lines.join(u'\n').toUtf8()) < 0)
        return u"%1 cannot be written: %2"_s.arg(file, target.errorString());
    return {};
}

QString FaultTable::compareWith(const QString &file) const
{
    const Document document(file);
    if (!document.hasTable())
        return u"%1 has no table that begins with \"%2\"."_s.arg(file, head);
    QMap<QString, QMap<QString, QString>> told;
    const QStringList actions = cellsOf(document.lines[document.begin]);
    for (qsizetype line = document.begin + 2; line < document.end; ++line) {
        const QStringList cells = cellsOf(document.lines[line]);
        for (qsizetype i = 1; i < cells.size() && i < actions.size(); ++i)
            told[cells[0]][actions[i]] = cells[i];
    }
    QStringList differences;
    for (const auto &[fault, cells] : m_cells.asKeyValueRange()) {
        for (const auto &[action, cell] : cells.asKeyValueRange()) {
            if (const QString is = told[fault][action]; is.left(1) != cell.left(1))
                differences << u"%1, %2: \"%3\", where %4 says \"%5\"."_s.arg(action, fault, cell, file, is);
        }
    }
    return differences.join(u'\n');
}

} // namespace faults

#include "Table.h"

#include <QTextBoundaryFinder>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype widestCell = 48;

/// What a reader counts as letters: a terminal gives each about one column, in every script.
std::vector<qsizetype> letterEnds(const QString &text)
{
    std::vector<qsizetype> ends;
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, text);
    for (qsizetype end = finder.toNextBoundary(); end >= 0; end = finder.toNextBoundary())
        ends.push_back(end);
    return ends;
}

QString shortened(QString text)
{
    text = text.simplified();
    const auto ends = letterEnds(text);
    return ends.size() <= widestCell ? text : text.left(ends[widestCell - 2]) + u'…';
}

} // namespace

void Table::addRow(const QStringList &cells)
{
    QStringList row;
    for (const QString &cell : cells)
        row.append(shortened(cell));
    m_rows.push_back(std::move(row));
}

QString Table::text() const
{
    std::vector<std::size_t> widths(static_cast<std::size_t>(m_rows.front().size()));
    for (const QStringList &row : m_rows)
        for (std::size_t i = 0; i < widths.size(); ++i)
            widths[i] = std::max(widths[i], letterEnds(row.value(static_cast<qsizetype>(i))).size());

    const auto line = [&](const QStringList &row) {
        QString text = u" "_s;
        for (std::size_t i = 0; i < widths.size(); ++i) {
            const QString cell = row.value(static_cast<qsizetype>(i));
            text += u' ' + cell + QString(static_cast<qsizetype>(widths[i] - letterEnds(cell).size() + 1), u' ');
        }
        while (text.endsWith(u' '))
            text.chop(1);
        return text + u'\n';
    };
    QStringList rule;
    for (const std::size_t width : widths)
        rule.append(QString(static_cast<qsizetype>(width), u'─'));

    QString text = u"%1 (%2)\n"_s.arg(m_title).arg(m_rows.size() - 1) + line(m_rows.front()) + line(rule);
    for (std::size_t i = 1; i < m_rows.size(); ++i)
        text += line(m_rows[i]);
    return text;
}

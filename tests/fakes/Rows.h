#pragma once

#include <QTest>

#include <initializer_list>
#include <tuple>

namespace vynlex {

/// Fills a data table: each row is its name, then a value a column.
template<typename... Columns> void addRows(std::initializer_list<std::tuple<const char *, Columns...>> rows)
{
    QTest::addColumn<std::tuple<Columns...>>("row");
    for (const auto &row : rows)
        std::apply([](const char *name,
                      const Columns &...values) { QTest::newRow(name) << std::tuple<Columns...>(values...); },
                   row);
}

/// The row that the test function runs with; the columns are those of `addRows`.
template<typename... Columns> std::tuple<Columns...> currentRow()
{
    QFETCH(std::tuple<Columns...>, row);
    return row;
}

} // namespace vynlex

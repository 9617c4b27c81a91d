#include "platform/ui/ReadingOrder.h"

#include <algorithm>

namespace vynlex {

void ReadingOrder::setCells(QQuickItem *cells)
{
    if (cells == m_cells)
        return;
    if (m_cells)
        m_cells->disconnect(this);
    m_cells = cells;
    if (m_cells)
        connect(m_cells, &QQuickItem::childrenChanged, this, &ReadingOrder::watchCells);
    watchCells();
    emit cellsChanged();
}

void ReadingOrder::watchCells()
{
    if (!m_cells)
        return;
    const auto cells = m_cells->childItems();
    for (const QQuickItem *cell : cells)
        connect(cell, &QQuickItem::yChanged, this, &ReadingOrder::orderLater, Qt::UniqueConnection);
    orderLater();
}

void ReadingOrder::orderLater()
{
    if (!std::exchange(m_waiting, true)) // the list view is laying its cells out, one after the other
        QMetaObject::invokeMethod(this, &ReadingOrder::order, Qt::QueuedConnection);
}

void ReadingOrder::order()
{
    m_waiting = false;
    if (!m_cells)
        return;
    auto cells = m_cells->childItems();
    if (std::ranges::is_sorted(cells, {}, &QQuickItem::y))
        return;
    std::ranges::stable_sort(cells, {}, &QQuickItem::y);
    for (qsizetype index = 1; index < cells.size(); ++index)
        cells[index]->stackAfter(cells[index - 1]);
}

} // namespace vynlex

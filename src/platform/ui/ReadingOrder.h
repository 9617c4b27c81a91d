#pragma once

#include <QObject>
#include <QPointer>
#include <QQmlEngine>
#include <QQuickItem>

namespace vynlex {

/// Keeps the cells of a list view in the order of their places from the top. Assistive tools read items in the order of
/// the scene, in which recycled cells stand where they were made.
///
/// Main thread. Orders on the turn after a cell came or moved.
class ReadingOrder : public QObject {
    Q_OBJECT
    QML_ELEMENT

    /// The list view's content item.
    Q_PROPERTY(QQuickItem *cells READ cells WRITE setCells NOTIFY cellsChanged FINAL)

public:
    using QObject::QObject;

    [[nodiscard]] QQuickItem *cells() const { return m_cells; }
    void setCells(QQuickItem *cells);

signals:
    void cellsChanged();

private:
    void watchCells();
    void orderLater();
    void order();

    QPointer<QQuickItem> m_cells;
    bool m_waiting = false;
};

} // namespace vynlex

#pragma once

#include <QQuickItem>
#include <QQuickWindow>

#include <vector>

#include "benchmarks/Figures.h"

/// The list view that is seen within `item`, or null.
inline QQuickItem *listIn(QQuickItem &item)
{
    for (QQuickItem *child : item.childItems()) {
        if (!child->isVisible())
            continue;
        if (QQuickItem *const list = child->inherits("QQuickListView") ? child : listIn(*child))
            return list;
    }
    return nullptr;
}

/// Draws the window so many times, each time with `list` `step` points further: negative is upwards. Milliseconds a
/// picture; fewer than asked for when an end is reached.
inline std::vector<double> scroll(QQuickWindow &window, QQuickItem &list, double step, int pictures)
{
    const char *const end = step < 0 ? "atYBeginning" : "atYEnd";
    std::vector<double> ms;
    while (static_cast<int>(ms.size()) < pictures && !list.property(end).toBool()) {
        ms.push_back(milliseconds([&] {
            list.setProperty("contentY", list.property("contentY").toDouble() + step);
            static_cast<void>(window.grabWindow());
        }));
    }
    return ms;
}

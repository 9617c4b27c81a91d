#pragma once

#include <QImage>
#include <QMarginsF>
#include <QRect>
#include <QString>
#include <QStringList>

#include <vector>

class QQuickItem;
class QQuickWindow;

namespace vynlex {

/// Looks at a window as its users do: finds controls by the name that an assistive tool reads out, presses them, and
/// tells what is wrong with what can be seen.
class ViewProbe {
public:
    explicit ViewProbe(QQuickWindow &window)
        : m_window(window)
    {
    }

    /// The visible item with this accessible name, or null.
    [[nodiscard]] QQuickItem *named(const QString &name) const;
    /// The visible item that shows this text, or null.
    [[nodiscard]] QQuickItem *showing(const QString &text) const;
    /// The names of all visible controls that can be pressed, in the order of the keyboard.
    [[nodiscard]] QStringList controlNames() const;
    /// The names of all that an assistive tool is told of, in the order in which it comes by them.
    [[nodiscard]] QStringList heard() const;

    void click(QQuickItem &item) const;
    void tap(QQuickItem &item) const;
    /// With a finger. What is scrolled goes on for a moment, as after any flick.
    void drag(QPoint from, QPoint by) const;
    void pressByAssistiveTool(QQuickItem &item) const;

    /// Whether something slides, springs or scrolls.
    [[nodiscard]] bool moves() const;

    /// A sentence for each fault: a control without a name, smaller than 44 points, out of reach of keyboard or
    /// assistive tool, elsewhere for such a tool, outside the safe area, or over another; a text that is cut off, lies
    /// outside the window or under a control.
    [[nodiscard]] QStringList faults(const QMarginsF &safeArea = {}) const;

private:
    QQuickWindow &m_window;
};

/// What is left of a part of the window for an eye that sees no colours.
[[nodiscard]] QImage inGrey(QQuickWindow &window, const QRect &part);

struct Look {
    QString name;
    QImage picture; ///< grey, all of one size
};
/// A sentence for each two of them of which 0.2 % of the points or less differ clearly.
[[nodiscard]] QStringList lookAlike(const std::vector<Look> &looks);

} // namespace vynlex

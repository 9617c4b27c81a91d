#pragma once

#include <QQmlEngine>
#include <QQuickItem>

#include <memory>

namespace vynlex {

class ScreenWindow;

/// Shows a window's screens: the root's view and above it the views of what is presented, as large as this item, with
/// the transitions of the presentations.
///
/// Views are made when their screen enters the chain and destroyed before it goes. Whatever a view leaves unhandled
/// ends there: what it covers gets no touch and no key. A screen without a view takes nothing itself. A view that
/// cannot be loaded is a programming error and ends the process.
class ScreenHost : public QQuickItem {
    Q_OBJECT
    QML_ANONYMOUS

public:
    /// `engine` and `window` must outlive this item.
    ScreenHost(QQmlEngine &engine, ScreenWindow &window, QQuickItem *parent = nullptr);
    ~ScreenHost() override;

    /// Milliseconds that a screen takes to slide in from the right, and that other presentations take.
    static constexpr int pushDurationMs = 300;
    static constexpr int presentationDurationMs = 400;

    /// True while a screen is entering or leaving.
    [[nodiscard]] bool isMoving() const;

signals:
    void movingChanged();

protected:
    void geometryChange(const QRectF &newGeometry, const QRectF &oldGeometry) override;

private:
    struct Screens;
    std::unique_ptr<Screens> m_screens;
};

} // namespace vynlex

#pragma once

#include <QMarginsF>
#include <QPointer>
#include <QQuickItem>

#include <memory>
#include <vector>

#include "platform/ui/ScreenHost.h"
#include "platform/ui/ScreenWindow.h"

class QQmlEngine;
class QQuickWindow;

namespace vynlex {

/// The kit's screens in a host's window, above all that the host shows there.
///
/// Main thread. While no screen is presented it is out of sight and takes nothing. While one is, the host's items get
/// no touch and no key, and are hidden as soon as the screen is in place, from assistive tools too; then they are as
/// they were, and what had the focus has it again. Escape and the back key, where a screen leaves them, take the
/// top-most screen away.
class KitOverlay final : public QQuickItem {
    Q_OBJECT
    QML_ANONYMOUS

public:
    /// The one of `window`, made when it is first asked for; it goes with the window. `engine` draws the screens, and
    /// the overlay goes with it, too; null for an engine that the kit shares among its overlays.
    static KitOverlay &in(QQuickWindow &window, QQmlEngine *engine);
    ~KitOverlay() override;

    /// What is presented next comes up here.
    void makeKey() { m_screens.makeKey(); }

protected:
    void keyPressEvent(QKeyEvent *event) override;
    void keyReleaseEvent(QKeyEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void touchEvent(QTouchEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;

private:
    KitOverlay(QQuickWindow &window, QQmlEngine *engine);

    [[nodiscard]] bool isPresenting() const;
    void presentationChanged();
    void movementChanged();
    void hideHostItems();
    void bringHostBack();
    void keepFocus();
    void fit();

    std::shared_ptr<QQmlEngine> m_ownEngine;
    ScreenWindow m_screens;
    std::unique_ptr<ScreenHost> m_screenHost;
    QPointer<QQuickItem> m_hostFocus;
    std::vector<QPointer<QQuickItem>> m_hiddenItems;
};

} // namespace vynlex

#include "entry/KitOverlay.h"

#include <QCoreApplication>
#include <QKeyEvent>
#include <QOperatingSystemVersion>
#include <QQmlContext>
#include <QQmlEngine>
#include <QQuickWindow>
#include <QScreen>

#include <algorithm>
#include <limits>

namespace vynlex {
namespace {

/// Kept as long as an overlay uses it, so that it ends before the application object does.
std::shared_ptr<QQmlEngine> sharedEngine()
{
    static std::weak_ptr<QQmlEngine> shared;
    auto engine = shared.lock();
    if (!engine)
        shared = engine = std::make_shared<QQmlEngine>();
    return engine;
}

/// What bars and notches take of the window. Only phones lay windows beneath them; elsewhere the part of the screen
/// that is not available says nothing about a window.
QMarginsF safeAreaInsets(const QWindow &window)
{
    constexpr auto system = QOperatingSystemVersion::currentType();
    if constexpr (system == QOperatingSystemVersion::Android || system == QOperatingSystemVersion::IOS) {
        if (const QScreen *const screen = window.screen()) {
            const QRectF available = screen->availableGeometry();
            const QRectF taken = window.geometry();
            return {std::max(0., available.left() - taken.left()), std::max(0., available.top() - taken.top()),
                    std::max(0., taken.right() - available.right()), std::max(0., taken.bottom() - available.bottom())};
        }
    }
    return {};
}

} // namespace

KitOverlay &KitOverlay::in(QQuickWindow &window, QQmlEngine *engine)
{
    auto *const overlay = window.contentItem()->findChild<KitOverlay *>({}, Qt::FindDirectChildrenOnly);
    return overlay ? *overlay : *new KitOverlay(window, engine);
}

KitOverlay::KitOverlay(QQuickWindow &window, QQmlEngine *engine)
    : QQuickItem(window.contentItem())
    , m_ownEngine(engine ? nullptr : sharedEngine())
    , m_screens(std::make_shared<ViewController>()) // in place of what the host shows
{
    setVisible(false);
    setFlag(ItemIsFocusScope);
    setZ(std::numeric_limits<qreal>::max());
    setAcceptedMouseButtons(Qt::AllButtons);
    setAcceptTouchEvents(true);

    // Before the screens follow, so that they come up, and go, in an item that is seen.
    connect(m_screens.rootViewController().get(), &ViewController::presentedViewControllerChanged, this,
            &KitOverlay::presentationChanged);
    m_screenHost = std::make_unique<ScreenHost>(engine ? *engine : *m_ownEngine, m_screens, this);
    connect(m_screenHost.get(), &ScreenHost::movingChanged, this, &KitOverlay::movementChanged);

    connect(&window, &QQuickWindow::activeFocusItemChanged, this, &KitOverlay::keepFocus);
    connect(window.contentItem(), &QQuickItem::widthChanged, this, &KitOverlay::fit);
    connect(window.contentItem(), &QQuickItem::heightChanged, this, &KitOverlay::fit);
    fit();
    if (engine) // Its root context is the first of it to go, while views can still be taken down in order.
        connect(engine->rootContext(), &QObject::destroyed, this, [this] { delete this; });
}

KitOverlay::~KitOverlay()
{
    disconnect(m_screens.rootViewController().get(), nullptr, this, nullptr);
    if (window()) // none while the window is being destroyed
        disconnect(window(), nullptr, this, nullptr);
    m_screenHost.reset();
    if (window() && isPresenting())
        bringHostBack();
}

bool KitOverlay::isPresenting() const
{
    return m_screens.rootViewController()->presentedViewController() != nullptr;
}

void KitOverlay::presentationChanged()
{
    if (!isPresenting()) {
        bringHostBack();
        return;
    }
    if (QQuickItem *const focused = window()->activeFocusItem();
        focused && focused != window()->contentItem() && !isAncestorOf(focused))
        m_hostFocus = focused;
    setVisible(true);
}

void KitOverlay::movementChanged()
{
    if (m_screenHost->isMoving())
        return;
    if (isPresenting())
        hideHostItems();
    else
        setVisible(false);
}

void KitOverlay::hideHostItems()
{
    // Covering them would not do: pointer handlers beneath get what was accepted above them.
    const auto items = window()->contentItem()->childItems();
    for (QQuickItem *item : items) {
        if (item == this || !item->isVisible())
            continue;
        m_hiddenItems.emplace_back(item);
        item->setVisible(false);
    }
}

void KitOverlay::bringHostBack()
{
    for (const auto &item : std::exchange(m_hiddenItems, {})) {
        if (item)
            item->setVisible(true);
    }
    setFocus(false);
    if (m_hostFocus)
        m_hostFocus->forceActiveFocus();
    m_hostFocus = nullptr;
}

/// What the host gives the focus to while the kit is open gets it afterwards.
void KitOverlay::keepFocus()
{
    QQuickItem *const focused = window() ? window()->activeFocusItem() : nullptr;
    if (!focused || !isPresenting() || focused == this || isAncestorOf(focused))
        return;
    if (focused != window()->contentItem()) // which has it when nothing has it
        m_hostFocus = focused;
    m_screenHost->forceActiveFocus();
}

void KitOverlay::fit()
{
    const QSizeF size = parentItem()->size();
    setSize(size);
    m_screenHost->setSize(size);
    m_screens.setSafeAreaInsets(safeAreaInsets(*window()));
}

void KitOverlay::keyPressEvent(QKeyEvent *event)
{
    // Those that move the focus are the window's to handle.
    event->setAccepted(event->key() != Qt::Key_Tab && event->key() != Qt::Key_Backtab);
    if (event->key() == Qt::Key_Back) {
        // The screens know Escape.
        QKeyEvent escape(QEvent::KeyPress, Qt::Key_Escape, Qt::NoModifier);
        QCoreApplication::sendEvent(window(), &escape);
    } else if (event->key() == Qt::Key_Escape && isPresenting()) {
        m_screens.presentedChain().back()->dismiss(Animated::Yes);
    }
}

// What the screens leave ends here.

void KitOverlay::keyReleaseEvent(QKeyEvent *event)
{
    event->accept();
}

void KitOverlay::mousePressEvent(QMouseEvent *event)
{
    event->setAccepted(isPresenting());
}

void KitOverlay::touchEvent(QTouchEvent *event)
{
    event->setAccepted(isPresenting());
}

void KitOverlay::wheelEvent(QWheelEvent *event)
{
    event->setAccepted(isPresenting());
}

} // namespace vynlex

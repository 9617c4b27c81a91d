#include "platform/ui/ScreenHost.h"

#include <QQmlComponent>
#include <QQuickWindow>
#include <QVariantAnimation>

#include <algorithm>
#include <functional>
#include <vector>

#include "platform/dispatch/FatalError.h"
#include "platform/ui/ScreenWindow.h"

using namespace Qt::StringLiterals;

namespace vynlex {
namespace {

using TransitionStyle = ViewController::ModalTransitionStyle;

/// The place of one screen, with its view. It takes every touch that the view leaves, so that none reaches what lies
/// below the screens, and it moves between `presence` 0 (out of sight) and 1 (in place).
class Stage final : public QQuickItem {
public:
    Stage(std::shared_ptr<ViewController> controller, QQuickItem &host)
        : QQuickItem(&host)
        , m_controller(std::move(controller))
        , m_style(m_controller->modalTransitionStyle)
    {
        setFlag(ItemIsFocusScope);
        setAcceptedMouseButtons(Qt::AllButtons);
        setAcceptTouchEvents(true);
        setAcceptHoverEvents(true);
        setSize(host.size());
        m_movement.setEasingCurve(QEasingCurve::InOutQuad);
        connect(&m_movement, &QVariantAnimation::valueChanged, this,
                [this](const QVariant &value) { place(value.toReal()); });
        connect(&m_movement, &QVariantAnimation::finished, this, [this] { m_arrived(); });
    }

    /// The view goes before the screen that its bindings read.
    ~Stage() override { qDeleteAll(childItems()); }

    [[nodiscard]] const std::shared_ptr<ViewController> &controller() const { return m_controller; }
    [[nodiscard]] bool isMoving() const { return m_movement.state() == QAbstractAnimation::Running; }

    /// The place of a screen without a view is a hole.
    [[nodiscard]] bool hasView() const { return !m_controller->contentViewController().viewSource().isEmpty(); }

    void makeView(QQmlEngine &engine, ScreenWindow &window)
    {
        if (!hasView())
            return;
        ViewController &content = m_controller->contentViewController();
        QQmlComponent component(&engine, content.viewSource());
        if (!component.isReady()) // creating would crash inside of Qt
            fatalError(
                u"The view %1 cannot be loaded: %2"_s.arg(content.viewSource().toString(), component.errorString()));
        auto *const view = qobject_cast<QQuickItem *>(component.createWithInitialProperties(
            {{u"controller"_s, QVariant::fromValue(&content)}, {u"window"_s, QVariant::fromValue(&window)}}));
        if (!view)
            fatalError(
                u"The view %1 cannot be shown: %2"_s.arg(content.viewSource().toString(), component.errorString()));
        QJSEngine::setObjectOwnership(view, QJSEngine::CppOwnership);
        view->setParentItem(this);
        view->setSize(size());
        view->setFocus(true);
    }

    /// `arrived` runs when the movement is over, at once when there is none. A movement under way turns round.
    void move(double presence, Animated animated, std::function<void()> arrived)
    {
        m_movement.stop();
        m_arrived = std::move(arrived);
        if (animated == Animated::No) {
            place(presence);
            m_arrived();
            return;
        }
        m_movement.setDuration(m_style == TransitionStyle::PushFromRight ? ScreenHost::pushDurationMs
                                                                         : ScreenHost::presentationDurationMs);
        m_movement.setStartValue(m_presence);
        m_movement.setEndValue(presence);
        m_movement.start();
    }

    /// A covered screen is out of reach. Accepting events above it would not do: pointer handlers get those too. The
    /// views hide from assistive tools what is disabled.
    void setCovered(bool covered)
    {
        m_covered = covered;
        setEnabled(!covered);
        setClip(covered); // What clips its children and does not contain the point is not searched any further.
    }
    [[nodiscard]] bool contains(const QPointF &point) const override
    {
        return !m_covered && QQuickItem::contains(point);
    }

    void place(double presence)
    {
        m_presence = presence;
        setX(m_style == TransitionStyle::PushFromRight ? (1 - presence) * width() : 0);
        setY(m_style == TransitionStyle::CoverVertical ? (1 - presence) * height() : 0);
        setOpacity(m_style == TransitionStyle::CrossDissolve ? presence : 1);
    }

protected:
    void mousePressEvent(QMouseEvent *event) override { event->accept(); }
    void mouseDoubleClickEvent(QMouseEvent *event) override { event->accept(); }
    void touchEvent(QTouchEvent *event) override { event->accept(); }
    void hoverMoveEvent(QHoverEvent *event) override { event->accept(); }
    void wheelEvent(QWheelEvent *event) override { event->accept(); }

    void geometryChange(const QRectF &newGeometry, const QRectF &oldGeometry) override
    {
        QQuickItem::geometryChange(newGeometry, oldGeometry);
        if (newGeometry.size() == oldGeometry.size())
            return;
        for (QQuickItem *view : childItems())
            view->setSize(newGeometry.size());
        place(m_presence);
    }

private:
    std::shared_ptr<ViewController> m_controller;
    const TransitionStyle m_style;
    double m_presence = 0;
    bool m_covered = false;
    QVariantAnimation m_movement;
    std::function<void()> m_arrived;
};

} // namespace

struct ScreenHost::Screens {
    ScreenHost &host;
    QQmlEngine &engine;
    ScreenWindow &window;
    std::vector<Stage *> shown = {};   ///< bottom to top
    std::vector<Stage *> leaving = {}; ///< out of the chain, still on their way out of sight
    QMetaObject::Connection focusChanged = {};

    /// Brings what is shown in line with the chain of presented screens.
    void follow()
    {
        const auto chain = window.presentedChain();
        const auto [firstLeaving, firstEntering] = std::ranges::mismatch(shown, chain, {}, &Stage::controller);
        const std::vector<std::shared_ptr<ViewController>> entering(firstEntering, chain.end());
        leave(static_cast<std::size_t>(firstLeaving - shown.begin()));
        for (const auto &controller : entering)
            enter(controller);
        settle();
    }

    void enter(const std::shared_ptr<ViewController> &controller)
    {
        auto *const stage = new Stage(controller, host);
        stage->makeView(engine, window);
        QObject::connect(controller.get(), &ViewController::presentedViewControllerChanged, stage,
                         [this] { follow(); });
        shown.push_back(stage);
        const Animated animated = shown.size() > 1 ? controller->transition() : Animated::No;
        stage->place(0);
        stage->move(1, animated, [this] { settle(); });
    }

    /// Takes the screens from number `first` up. The lowest of them is seen going, as it went; those above are gone at
    /// once.
    void leave(std::size_t first)
    {
        while (shown.size() > first) {
            Stage *const stage = shown.back();
            shown.pop_back();
            stage->controller()->disconnect(stage);
            stage->setCovered(true);
            leaving.push_back(stage);
            stage->move(0, shown.size() == first ? stage->controller()->transition() : Animated::No,
                        [this, stage] { remove(stage); });
        }
    }

    void remove(Stage *stage)
    {
        std::erase(leaving, stage);
        stage->setVisible(false);
        stage->deleteLater();
        emit host.movingChanged();
    }

    /// What is covered wholly is not drawn and not found by an assistive tool; the top screen has the keys.
    void settle()
    {
        bool covered = false;
        for (auto stage = shown.rbegin(); stage != shown.rend(); ++stage) {
            (*stage)->setVisible(!covered);
            (*stage)->setCovered(stage != shown.rbegin() || !(*stage)->hasView());
            covered = covered || ((*stage)->controller()->modalPresentationStyle ==
                                      ViewController::ModalPresentationStyle::FullScreen &&
                                  !(*stage)->isMoving());
        }
        if (!shown.empty() && shown.back()->hasView())
            shown.back()->forceActiveFocus();
        emit host.movingChanged();
    }

    void watchFocus()
    {
        QObject::disconnect(focusChanged);
        if (host.window())
            focusChanged =
                QObject::connect(host.window(), &QQuickWindow::activeFocusItemChanged, &host, [this] { keepFocus(); });
    }

    /// Keys that wander off the top screen come back to its first control.
    void keepFocus()
    {
        const QQuickItem *const focused = host.window() ? host.window()->activeFocusItem() : nullptr;
        if (!focused || shown.empty() || !shown.back()->hasView() || !host.isAncestorOf(focused) ||
            shown.back() == focused || shown.back()->isAncestorOf(focused))
            return;
        QQuickItem *const first = shown.back()->nextItemInFocusChain();
        (shown.back()->isAncestorOf(first) ? first : shown.back())->forceActiveFocus(Qt::TabFocusReason);
    }
};

ScreenHost::ScreenHost(QQmlEngine &engine, ScreenWindow &window, QQuickItem *parent)
    : QQuickItem(parent)
    , m_screens(new Screens{*this, engine, window})
{
    setFlag(ItemIsFocusScope);
    connect(&window, &ScreenWindow::rootViewControllerChanged, this, [this] { m_screens->follow(); });
    connect(this, &QQuickItem::windowChanged, this, [this] { m_screens->watchFocus(); });
    m_screens->watchFocus();
    m_screens->follow();
}

ScreenHost::~ScreenHost()
{
    // Deleting items moves the focus and changes windows; there is nothing left to keep in order.
    QObject::disconnect(m_screens->focusChanged);
    QObject::disconnect(this, nullptr, this, nullptr);
    qDeleteAll(childItems());
}

bool ScreenHost::isMoving() const
{
    return !m_screens->leaving.empty() || std::ranges::any_of(m_screens->shown, &Stage::isMoving);
}

void ScreenHost::geometryChange(const QRectF &newGeometry, const QRectF &oldGeometry)
{
    QQuickItem::geometryChange(newGeometry, oldGeometry);
    for (QQuickItem *stage : childItems())
        stage->setSize(newGeometry.size());
}

} // namespace vynlex

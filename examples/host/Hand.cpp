#include "Hand.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QQuickItem>
#include <QWheelEvent>

#include <utility>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace host {
namespace {

/// A control of a screen that is there already, or is coming up.
constexpr auto screenLimit = 10s;

quint64 now()
{
    return static_cast<quint64>(QDateTime::currentMSecsSinceEpoch());
}

QPointF middleOf(const QQuickItem &item)
{
    return item.mapToScene(item.boundingRect().center());
}

/// Its middle is inside of the window and of all that clips it.
bool isInSight(const QQuickItem &item)
{
    const QPointF middle = middleOf(item);
    for (const QQuickItem *around = item.parentItem(); around; around = around->parentItem()) {
        const bool clips = around->clip() || !around->parentItem(); // the last is the window's own
        if (clips && !around->contains(around->mapFromScene(middle)))
            return false;
    }
    return true;
}

/// What an assistive tool would find below `parent`; of several the lowest in the window.
QQuickItem *findBelow(const QAccessibleInterface &parent, const QString &name, QAccessible::Role role)
{
    QQuickItem *lowest = nullptr;
    for (int i = 0; i < parent.childCount(); ++i) {
        const QAccessibleInterface *const child = parent.child(i);
        if (!child || child->state().invisible)
            continue;
        QQuickItem *item = qobject_cast<QQuickItem *>(child->object());
        if (!item || child->role() != role || child->text(QAccessible::Name).trimmed() != name || !isInSight(*item))
            item = findBelow(*child, name, role);
        if (item && (!lowest || middleOf(*item).y() > middleOf(*lowest).y()))
            lowest = item;
    }
    return lowest;
}

} // namespace

Hand::Hand(Stage &stage)
    : m_stage(stage)
{
}

QQuickItem *Hand::find(const QString &name, QAccessible::Role role) const
{
    const QAccessibleInterface *const window = QAccessible::queryAccessibleInterface(&m_stage.window());
    return window ? findBelow(*window, name, role) : nullptr;
}

bool Hand::sees(const QString &name, QAccessible::Role role) const
{
    return find(name, role) != nullptr;
}

void Hand::press(const QString &name, QAccessible::Role role)
{
    const auto canBePressed = [&] {
        const QQuickItem *const control = m_stage.isMoving() ? nullptr : find(name, role);
        return control && control->isEnabled();
    };
    await(u"\"%1\""_s.arg(name), canBePressed, screenLimit);
    if (isAtWork())
        tap(*find(name, role));
}

void Hand::tap(const QQuickItem &item)
{
    const QPointF place = middleOf(item);
    QQuickWindow &window = m_stage.window();
    for (const auto &[what, held] :
         {std::pair{QEvent::MouseButtonPress, Qt::LeftButton}, std::pair{QEvent::MouseButtonRelease, Qt::NoButton}}) {
        QMouseEvent event(what, place, window.mapToGlobal(place), Qt::LeftButton, held, Qt::NoModifier);
        event.setTimestamp(now());
        QCoreApplication::sendEvent(&window, &event);
    }
}

void Hand::press(Qt::Key key)
{
    if (!isAtWork())
        return;
    for (const QEvent::Type what : {QEvent::KeyPress, QEvent::KeyRelease}) {
        QKeyEvent event(what, key, Qt::NoModifier);
        QCoreApplication::sendEvent(&m_stage.window(), &event);
    }
}

void Hand::type(const QString &text)
{
    for (const QChar letter : text) {
        if (!isAtWork())
            return;
        QKeyEvent event(QEvent::KeyPress, Qt::Key_unknown, Qt::NoModifier, letter);
        QCoreApplication::sendEvent(&m_stage.window(), &event);
    }
}

void Hand::scroll(int notches)
{
    if (!isAtWork())
        return;
    const QPointF middle(m_stage.window().width() / 2.0, m_stage.window().height() / 2.0);
    for (int i = 0; i < std::abs(notches); ++i) {
        QWheelEvent turn(middle, middle, {}, QPoint(0, notches > 0 ? -120 : 120), Qt::NoButton, Qt::NoModifier,
                         Qt::NoScrollPhase, false);
        turn.setTimestamp(now());
        QCoreApplication::sendEvent(&m_stage.window(), &turn);
        letPass(30ms);
    }
    m_stage.settle();
}

void Hand::await(const QString &what, const std::function<bool()> &condition, std::chrono::milliseconds limit)
{
    if (isAtWork() && !waitUntil(condition, limit))
        m_problem = u"%1 did not come."_s.arg(what);
}

void Hand::await(const QString &name, QAccessible::Role role)
{
    await(
        u"\"%1\""_s.arg(name), [&] { return !m_stage.isMoving() && sees(name, role); }, screenLimit);
}

void Hand::note(const tl::expected<void, QString> &outcome)
{
    if (isAtWork() && !outcome)
        m_problem = outcome.error();
}

tl::expected<void, QString> Hand::outcome()
{
    if (QString problem = std::exchange(m_problem, {}); !problem.isEmpty())
        return tl::unexpected(std::move(problem));
    return {};
}

} // namespace host

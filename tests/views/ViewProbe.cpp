#include "tests/views/ViewProbe.h"

#include <QAccessible>
#include <QPointingDevice>
#include <QQuickItem>
#include <QQuickWindow>
#include <QTest>

#include <algorithm>
#include <array>
#include <functional>
#include <vector>

using namespace Qt::StringLiterals;

namespace vynlex {
namespace {

constexpr qreal smallestTouch = 44;
constexpr qreal rounding = 1;

/// Visits what can be seen and is not covered by a screen above.
void visit(QQuickItem &item, const std::function<void(QQuickItem &)> &visitor)
{
    const bool covered = item.clip() && !item.contains(item.boundingRect().center());
    if (!item.isVisible() || qFuzzyIsNull(item.opacity()) || covered)
        return;
    visitor(item);
    for (QQuickItem *child : item.childItems())
        visit(*child, visitor);
}

QAccessibleInterface *accessible(QQuickItem &item)
{
    return QAccessible::queryAccessibleInterface(&item);
}

QString accessibleName(QQuickItem &item)
{
    auto *const face = accessible(item);
    return face ? face->text(QAccessible::Name) : QString();
}

bool isControl(QQuickItem &item)
{
    static constexpr std::array roles{QAccessible::Button, QAccessible::RadioButton, QAccessible::PageTab,
                                      QAccessible::EditableText};
    auto *const face = accessible(item);
    return face && std::ranges::find(roles, face->role()) != roles.end();
}

bool isToBePressed(QQuickItem &control)
{
    return accessible(control)->role() != QAccessible::EditableText;
}

/// Whether an assistive tool takes the control for being where it is seen.
bool isToldItsPlace(QQuickItem &control)
{
    const QRectF seen = control.mapRectToScene({0, 0, control.width(), control.height()});
    return seen.contains(accessible(control)->rect().center() - control.window()->position());
}

void listen(QAccessibleInterface &face, QStringList &names)
{
    if (face.state().invisible)
        return;
    if (const QString name = face.text(QAccessible::Name); !name.isEmpty())
        names.append(name);
    for (int child = 0; child < face.childCount(); ++child)
        listen(*face.child(child), names);
}

bool isText(const QQuickItem &item)
{
    return item.inherits("QQuickText") && !item.property("text").toString().isEmpty();
}

QQuickItem *scrollingParent(const QQuickItem &item)
{
    for (QQuickItem *parent = item.parentItem(); parent; parent = parent->parentItem()) {
        if (parent->inherits("QQuickFlickable"))
            return parent;
    }
    return nullptr;
}

QRectF inWindow(const QQuickItem &item, const QRectF &rect)
{
    return item.mapRectToScene(rect);
}

/// Where a text's ink lies, as far as scrolling lets it be seen.
QRectF ink(const QQuickItem &text)
{
    const QSizeF content(text.property("contentWidth").toReal(), text.property("contentHeight").toReal());
    const auto placed = [](int alignment, qreal room, qreal taken) {
        if (alignment & (Qt::AlignHCenter | Qt::AlignVCenter))
            return (room - taken) / 2;
        return alignment & (Qt::AlignRight | Qt::AlignBottom) ? room - taken : 0.0;
    };
    const QPointF corner(placed(text.property("horizontalAlignment").toInt(), text.width(), content.width()),
                         placed(text.property("verticalAlignment").toInt(), text.height(), content.height()));
    const QRectF all = inWindow(text, {corner, content});
    const QQuickItem *const scrolling = scrollingParent(text);
    return scrolling ? all & inWindow(*scrolling, scrolling->boundingRect()) : all;
}

/// The part of an item that scrolling lets be touched; empty when there is none.
QRectF reach(const QQuickItem &item)
{
    const QRectF all = inWindow(item, item.boundingRect());
    const QQuickItem *const scrolling = scrollingParent(item);
    return scrolling ? all & inWindow(*scrolling, scrolling->boundingRect()) : all;
}

/// By Tab, or by the arrow keys inside a list that is one stop for Tab.
bool isInTheKeyboardsReach(const QQuickItem &control)
{
    const QQuickItem *const list = scrollingParent(control);
    return control.activeFocusOnTab() ||
           (list && list->inherits("QQuickItemView") && list->property("keyNavigationEnabled").toBool());
}

QPointingDevice *finger()
{
    static auto *const finger = QTest::createTouchDevice();
    return finger;
}

bool within(const QQuickItem &item, const QQuickItem &ancestor)
{
    return &item == &ancestor || ancestor.isAncestorOf(&item);
}

bool overlap(const QRectF &a, const QRectF &b)
{
    return a.adjusted(rounding, rounding, -rounding, -rounding).intersects(b);
}

/// The share of points, 0 to 1, that differ clearly between two grey pictures of one size.
double difference(const QImage &a, const QImage &b)
{
    qsizetype different = 0;
    for (int y = 0; y < a.height(); ++y) {
        for (int x = 0; x < a.width(); ++x)
            different += std::abs(a.constScanLine(y)[x] - b.constScanLine(y)[x]) > 60;
    }
    return static_cast<double>(different) / (static_cast<double>(a.width()) * a.height());
}

} // namespace

QQuickItem *ViewProbe::named(const QString &name) const
{
    QQuickItem *found = nullptr;
    visit(*m_window.contentItem(), [&](QQuickItem &item) {
        if (!found && accessibleName(item) == name)
            found = &item;
    });
    return found;
}

QQuickItem *ViewProbe::showing(const QString &text) const
{
    QQuickItem *found = nullptr;
    visit(*m_window.contentItem(), [&](QQuickItem &item) {
        if (isText(item) && item.property("text").toString() == text)
            found = &item;
    });
    return found;
}

QStringList ViewProbe::controlNames() const
{
    QStringList names;
    visit(*m_window.contentItem(), [&](QQuickItem &item) {
        if (isControl(item) && item.isEnabled())
            names.append(accessibleName(item));
    });
    return names;
}

QStringList ViewProbe::heard() const
{
    QStringList names;
    listen(*QAccessible::queryAccessibleInterface(&m_window), names);
    return names;
}

void ViewProbe::click(QQuickItem &item) const
{
    QTest::mouseClick(&m_window, Qt::LeftButton, {}, item.mapToScene(item.boundingRect().center()).toPoint());
}

void ViewProbe::tap(QQuickItem &item) const
{
    const QPoint place = item.mapToScene(item.boundingRect().center()).toPoint();
    QTest::touchEvent(&m_window, finger()).press(0, place, &m_window);
    QTest::touchEvent(&m_window, finger()).release(0, place, &m_window);
}

void ViewProbe::drag(QPoint from, QPoint by) const
{
    constexpr int steps = 10;
    QTest::touchEvent(&m_window, finger()).press(0, from, &m_window);
    for (int step = 1; step <= steps; ++step) {
        QTest::touchEvent(&m_window, finger()).move(0, from + by * step / steps, &m_window);
        QTest::qWait(10); // places at the same time are no movement
    }
    QTest::touchEvent(&m_window, finger()).release(0, from + by, &m_window);
}

void ViewProbe::pressByAssistiveTool(QQuickItem &item) const
{
    accessible(item)->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
}

bool ViewProbe::moves() const
{
    bool moves = false;
    visit(*m_window.contentItem(), [&](QQuickItem &item) { moves |= item.property("moving").toBool(); });
    return moves;
}

QStringList ViewProbe::faults(const QMarginsF &safeArea) const
{
    std::vector<QQuickItem *> controls;
    std::vector<QQuickItem *> texts;
    visit(*m_window.contentItem(), [&](QQuickItem &item) {
        if (isControl(item) && item.isEnabled())
            controls.push_back(&item);
        if (isText(item) && item.isEnabled())
            texts.push_back(&item);
    });

    const QRectF window(QPointF(), m_window.size());
    const QRectF safe = window.marginsRemoved(safeArea);
    QStringList faults;
    for (std::size_t index = 0; index < controls.size(); ++index) {
        QQuickItem &control = *controls[index];
        const QString name = accessibleName(control);
        const QRectF place = reach(control);
        if (name.isEmpty())
            faults.append(u"a control has no name: "_s + QString::fromLatin1(control.metaObject()->className()));
        if (control.width() < smallestTouch || control.height() < smallestTouch)
            faults.append(u"too small to touch: %1"_s.arg(name));
        if (!isInTheKeyboardsReach(control))
            faults.append(u"out of the keyboard's reach: %1"_s.arg(name));
        if (isToBePressed(control) &&
            !accessible(control)->actionInterface()->actionNames().contains(QAccessibleActionInterface::pressAction()))
            faults.append(u"not to be pressed by an assistive tool: %1"_s.arg(name));
        if (!isToldItsPlace(control))
            faults.append(u"elsewhere for an assistive tool: %1"_s.arg(name));
        if (!scrollingParent(control) && !safe.contains(place))
            faults.append(u"outside the safe area: %1"_s.arg(name));
        for (std::size_t other = index + 1; other < controls.size(); ++other) {
            if (overlap(place, reach(*controls[other])))
                faults.append(u"one over the other: %1, %2"_s.arg(name, accessibleName(*controls[other])));
        }
    }
    for (const QQuickItem *const text : texts) {
        const QString words = text->property("text").toString();
        const bool wide = text->property("contentWidth").toReal() > text->width() + rounding;
        const bool high = text->property("contentHeight").toReal() > text->height() + rounding;
        if (text->property("truncated").toBool() || wide || high)
            faults.append(u"cut off: %1"_s.arg(words));
        if (!scrollingParent(*text) && !window.contains(ink(*text)))
            faults.append(u"outside the window: %1"_s.arg(words));
        for (QQuickItem *const control : controls) {
            if (!within(*text, *control) && overlap(ink(*text), reach(*control)))
                faults.append(u"under %1: %2"_s.arg(accessibleName(*control), words));
        }
    }
    return faults;
}

QImage inGrey(QQuickWindow &window, const QRect &part)
{
    return window.grabWindow().copy(part).convertToFormat(QImage::Format_Grayscale8);
}

QStringList lookAlike(const std::vector<Look> &looks)
{
    QStringList pairs;
    for (std::size_t one = 0; one < looks.size(); ++one) {
        for (std::size_t other = one + 1; other < looks.size(); ++other) {
            const double share = difference(looks[one].picture, looks[other].picture);
            if (share <= 0.002)
                pairs.append(u"%1 and %2 look alike: %3"_s.arg(looks[one].name, looks[other].name).arg(share));
        }
    }
    return pairs;
}

} // namespace vynlex

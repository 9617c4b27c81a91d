#pragma once

#include <QAccessible>
#include <QString>

#include <chrono>
#include <functional>
#include <tl/expected.hpp>

#include "Stage.h"
#include "Waiting.h"

class QQuickItem;

namespace host {

/// Uses the window as a person does: sees what is in sight by the names and roles that assistive tools read out,
/// presses it with a finger, and types.
///
/// What it is told to press or to await it waits for. The first that does not come is told by `outcome`; everything
/// after that is left undone, so that a story can be told without asking after each sentence. Main thread.
class Hand {
public:
    explicit Hand(Stage &stage);

    /// Blanks at a name's end do not count. A control that has to be scrolled to is not in sight.
    [[nodiscard]] bool sees(const QString &name, QAccessible::Role role = QAccessible::Button) const;

    /// Of several the lowest; a control that is disabled is waited for.
    void press(const QString &name, QAccessible::Role role = QAccessible::Button);
    void press(Qt::Key key);
    /// Letter by letter, into what has the keyboard.
    void type(const QString &text);
    /// Turns the wheel over the middle of the window, and waits until what is there has come to rest; down is positive.
    void scroll(int notches);

    /// `what` finishes the sentence "… did not come".
    void await(const QString &what, const std::function<bool()> &condition,
               std::chrono::milliseconds limit = serviceLimit);
    /// Until it is in sight.
    void await(const QString &name, QAccessible::Role role);

    /// Takes over what somebody else's work has come to.
    void note(const tl::expected<void, QString> &outcome);

    [[nodiscard]] bool isAtWork() const { return m_problem.isEmpty(); }
    /// Whether everything since the last call came, or one clear line.
    [[nodiscard]] tl::expected<void, QString> outcome();

private:
    [[nodiscard]] QQuickItem *find(const QString &name, QAccessible::Role role) const;
    void tap(const QQuickItem &item);

    Stage &m_stage;
    QString m_problem;
};

} // namespace host

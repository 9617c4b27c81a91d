#pragma once

#include <QElapsedTimer>
#include <QString>

#include <chrono>
#include <deque>
#include <functional>
#include <memory>
#include <vector>

#include "tests/faults/Laboratory.h"

namespace faults {

/// Something that a user does and that needs one service. Main thread.
class FaultRow {
public:
    virtual ~FaultRow() = default;

    QString name;
    QString host; ///< Of what is to fail: nobody else asks this host for this path.
    QString path = QStringLiteral("*");
    bool takesTime = true; ///< The service's answer can be delayed, so that the user waits for it.
    bool isTimed = true;   ///< How long it takes is the kit's doing, not this row's own.

    /// Brings the kit to the point from which `act` begins, with all services well. It has come there when it is not
    /// busy any more.
    virtual void prepare() = 0;
    /// Back to that point, when all has been well since.
    virtual void prepareAgain() {}
    virtual void act() = 0;
    /// The same once more, from whatever the fault has left on the screen.
    virtual void actAgain() { act(); }

    /// The service that is to fail is asked as soon as the user acts, or has been by now.
    [[nodiscard]] virtual bool isAsking() const { return true; }
    /// The user has what they wanted.
    [[nodiscard]] virtual bool cameThrough() const = 0;
    /// What the screen shows or has lost after a failure and is not meant to; empty if all is as it is meant to be.
    [[nodiscard]] virtual QString complaint() const = 0;

    /// Goes on with what waits for something. True as long as the user, or the kit for the user, waits.
    bool isBusy()
    {
        while (!m_steps.empty() && m_steps.front().due()) {
            const auto action = std::move(m_steps.front().action);
            m_steps.pop_front();
            action();
        }
        return !m_steps.empty() || !isAtRest();
    }
    /// Gives up waiting: from here on it is the user's turn.
    void abandon() { m_steps.clear(); }
    /// A user who sees nothing happen does something else by then.
    std::chrono::seconds patience{70};

protected:
    [[nodiscard]] virtual bool isAtRest() const = 0;
    /// Does `action` as soon as `due`, after whatever has been asked for before.
    void when(std::function<bool()> due, std::function<void()> action)
    {
        m_steps.push_back({std::move(due), std::move(action)});
    }

private:
    struct Step {
        std::function<bool()> due;
        std::function<void()> action;
    };
    std::deque<Step> m_steps;
};

using FaultRows = std::vector<std::unique_ptr<FaultRow>>;

// The rows of the table, in its order, each with a kit of its own.
void addHomeRows(FaultRows &rows, Laboratory &laboratory);
void addChatRows(FaultRows &rows, Laboratory &laboratory);
void addTalkRows(FaultRows &rows, Laboratory &laboratory);

} // namespace faults

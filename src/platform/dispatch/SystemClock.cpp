#include "platform/dispatch/SystemClock.h"

#include <QTimer>

namespace vynlex {
namespace {

class QtTimer final : public Timer {
public:
    QtTimer(std::chrono::milliseconds interval, bool singleShot, Task task)
    {
        m_timer.setTimerType(Qt::PreciseTimer);
        m_timer.setSingleShot(singleShot);
        // The task is copied before it runs, because it may destroy this timer and with it the original.
        QObject::connect(&m_timer, &QTimer::timeout, [task = std::move(task)] {
            const Task copy = task;
            copy();
        });
        m_timer.start(interval);
    }

private:
    QTimer m_timer;
};

} // namespace

std::chrono::steady_clock::time_point SystemClock::now() const
{
    return std::chrono::steady_clock::now();
}

std::unique_ptr<Timer> SystemClock::after(std::chrono::milliseconds delay, Task task)
{
    return std::make_unique<QtTimer>(delay, true, std::move(task));
}

std::unique_ptr<Timer> SystemClock::every(std::chrono::milliseconds interval, Task task)
{
    return std::make_unique<QtTimer>(interval, false, std::move(task));
}

} // namespace vynlex

#include "EventLoop.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QEventLoop>
#include <QTimer>

namespace examples {

bool waitUntil(const std::function<bool()> &condition, std::chrono::milliseconds limit)
{
    const QDeadlineTimer deadline(limit);
    QTimer tick; // wakes the loop for conditions that no event announces
    tick.start(10);
    while (!condition()) {
        if (deadline.hasExpired())
            return false;
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    return true;
}

void letPass(std::chrono::milliseconds time)
{
    waitUntil([] { return false; }, time);
}

} // namespace examples

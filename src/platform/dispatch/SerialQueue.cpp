#include "platform/dispatch/SerialQueue.h"

#include <deque>

#include <pthread.h>

#include "platform/dispatch/GlobalQueue.h"
#include "platform/dispatch/Guarded.h"

namespace vynlex {
namespace {

/// Not by QThread's `objectName`: the object of a pool's thread belongs to whichever thread began it, and may be
/// written to as long as that one lives only.
void nameCurrentThread(const QString &name)
{
    constexpr qsizetype longest = 15; // on Linux, which takes nothing longer
    const QByteArray text = name.toLatin1().left(longest);
#ifdef Q_OS_APPLE
    pthread_setname_np(text.constData());
#else
    pthread_setname_np(pthread_self(), text.constData());
#endif
}

} // namespace

struct SerialQueue::Lane : std::enable_shared_from_this<SerialQueue::Lane> {
    struct State {
        std::deque<Task> tasks;
        bool running = false;
    };

    QString label;
    Guarded<State> state;

    void push(Task task)
    {
        const bool start = state.with([&](State &s) {
            s.tasks.push_back(std::move(task));
            return !std::exchange(s.running, true);
        });
        if (start)
            GlobalQueue::async([self = shared_from_this()] { self->drain(); });
    }

    void drain()
    {
        nameCurrentThread(label);
        while (const Task task = next())
            task();
    }

    Task next()
    {
        return state.with([](State &s) {
            if (s.tasks.empty()) {
                s.running = false;
                return Task{};
            }
            Task front = std::move(s.tasks.front());
            s.tasks.pop_front();
            return front;
        });
    }

    void dropPending()
    {
        // The tasks are destroyed after the lock is gone: what they own may come back here.
        const std::deque<Task> dropped = state.with([](State &s) { return std::exchange(s.tasks, {}); });
    }
};

SerialQueue::SerialQueue(const QString &label)
    : m_lane(std::make_shared<Lane>())
{
    m_lane->label = label;
}

SerialQueue::~SerialQueue()
{
    m_lane->dropPending();
}

void SerialQueue::async(Task task)
{
    m_lane->push(std::move(task));
}

} // namespace vynlex

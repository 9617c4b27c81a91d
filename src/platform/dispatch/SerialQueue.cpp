#include "platform/dispatch/SerialQueue.h"

#include <QThreadPool>

#include <deque>

#include "platform/dispatch/Guarded.h"

namespace vynlex {

struct SerialQueue::State {
    Guarded<std::deque<Task>> tasks;
    QThreadPool pool;

    void runNext()
    {
        const Task task = tasks.with([](std::deque<Task> &queue) {
            if (queue.empty())
                return Task{};
            Task front = std::move(queue.front());
            queue.pop_front();
            return front;
        });
        if (task)
            task();
    }
};

SerialQueue::SerialQueue(const QString &label)
    : m_state(std::make_unique<State>())
{
    m_state->pool.setObjectName(label);
    m_state->pool.setMaxThreadCount(1);
}

SerialQueue::~SerialQueue()
{
    m_state->tasks.set({});
    m_state->pool.clear();
    m_state->pool.waitForDone();
}

void SerialQueue::async(Task task)
{
    m_state->tasks.with([&](std::deque<Task> &queue) { queue.push_back(std::move(task)); });
    m_state->pool.start([state = m_state.get()] { state->runNext(); });
}

} // namespace vynlex

#include "platform/dispatch/GlobalQueue.h"

#include <QThreadPool>

#include <deque>

#include "platform/dispatch/Guarded.h"

namespace vynlex {
namespace {

struct Pool {
    Guarded<std::deque<Task>> tasks;
    QThreadPool threads;

    Pool()
    {
        threads.setObjectName(QStringLiteral("globalQueue"));
        threads.setMaxThreadCount(GlobalQueue::maximumThreads);
    }

    void runNext()
    {
        const Task task = tasks.with([](std::deque<Task> &queue) {
            Task front = std::move(queue.front());
            queue.pop_front();
            return front;
        });
        task();
    }
};

} // namespace

void GlobalQueue::async(Task task)
{
    static auto *const pool = new Pool; // Never destroyed: a blocked task may outlast static destruction.
    pool->tasks.with([&](std::deque<Task> &queue) { queue.push_back(std::move(task)); });
    pool->threads.start([] { pool->runNext(); });
}

} // namespace vynlex

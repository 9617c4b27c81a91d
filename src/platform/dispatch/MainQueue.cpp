#include "platform/dispatch/MainQueue.h"

#include <QCoreApplication>
#include <QEvent>
#include <QObject>
#include <QThread>

#include <deque>
#include <mutex>

namespace vynlex {
namespace {

/// Values cross threads inside a mutex-guarded queue; the Qt event is a bare wake-up and carries nothing.
class Mailbox final : public QObject {
public:
    static Mailbox &instance()
    {
        static auto *const mailbox = new Mailbox; // Never destroyed: workers may post until the process ends.
        return *mailbox;
    }

    void post(Task task)
    {
        const std::lock_guard lock(m_mutex);
        m_tasks.push_back(std::move(task));
        wakeUp();
    }

private:
    Mailbox()
    {
        if (auto *application = QCoreApplication::instance())
            moveToThread(application->thread());
    }

    /// One wake-up is under way whenever there is a task. One task runs per wake-up, so that a task which spins a
    /// nested event loop does not hold up those behind it.
    void wakeUp()
    {
        if (m_wakeUpPosted || m_tasks.empty())
            return;
        m_wakeUpPosted = true;
        QCoreApplication::postEvent(this, new QEvent(QEvent::User));
    }

    bool event(QEvent *event) override
    {
        if (event->type() != QEvent::User)
            return QObject::event(event);
        Task task;
        {
            const std::lock_guard lock(m_mutex);
            m_wakeUpPosted = false;
            if (m_tasks.empty())
                return true;
            task = std::move(m_tasks.front());
            m_tasks.pop_front();
            wakeUp();
        }
        task();
        return true;
    }

    std::mutex m_mutex;
    std::deque<Task> m_tasks;
    bool m_wakeUpPosted = false;
};

} // namespace

void MainQueue::async(Task task)
{
    Mailbox::instance().post(std::move(task));
}

bool MainQueue::isCurrent()
{
    const auto *application = QCoreApplication::instance();
    return application && QThread::currentThread() == application->thread();
}

} // namespace vynlex

#include "platform/audio/AudioThread.h"

#include <QCoreApplication>
#include <QEvent>
#include <QObject>
#include <QThread>

#include <condition_variable>
#include <deque>
#include <memory>
#include <mutex>

namespace vynlex {
namespace {

/// The tasks wait in a queue under a mutex; the Qt event is a bare wake-up and carries nothing.
class Mailbox final : public QObject {
public:
    static Mailbox &instance()
    {
        static auto *const mailbox = new Mailbox; // never destroyed: players may outlive the application object
        return *mailbox;
    }

    void post(Task task)
    {
        const std::lock_guard lock(m_mutex);
        if (m_closed)
            return;
        m_tasks.push_back(std::move(task));
        QCoreApplication::postEvent(this, new QEvent(QEvent::User));
    }

    [[nodiscard]] bool isCurrent() const { return QThread::currentThread() == &m_thread; }

private:
    Mailbox()
    {
        m_thread.setObjectName(QStringLiteral("audio"));
        moveToThread(&m_thread);
        m_thread.start();
        qAddPostRoutine([] { instance().end(); });
    }

    void end()
    {
        {
            const std::lock_guard lock(m_mutex);
            m_closed = true;
        }
        m_thread.quit();
        m_thread.wait();
    }

    bool event(QEvent *event) override
    {
        if (event->type() != QEvent::User)
            return QObject::event(event);
        Task task;
        {
            const std::lock_guard lock(m_mutex);
            if (m_tasks.empty())
                return true;
            task = std::move(m_tasks.front());
            m_tasks.pop_front();
        }
        task();
        return true;
    }

    QThread m_thread;
    std::mutex m_mutex;
    std::deque<Task> m_tasks;
    bool m_closed = false;
};

} // namespace

void AudioThread::async(Task task)
{
    Mailbox::instance().post(std::move(task));
}

bool AudioThread::sync(Task task, std::chrono::milliseconds limit)
{
    if (Mailbox::instance().isCurrent()) {
        task();
        return true;
    }
    struct Rendezvous {
        std::mutex mutex;
        std::condition_variable changed;
        bool done = false;
    };
    const auto rendezvous = std::make_shared<Rendezvous>();
    async([rendezvous, task = std::move(task)] {
        task();
        const std::lock_guard lock(rendezvous->mutex);
        rendezvous->done = true;
        rendezvous->changed.notify_all();
    });
    std::unique_lock lock(rendezvous->mutex);
    return rendezvous->changed.wait_for(lock, limit, [&] { return rendezvous->done; });
}

} // namespace vynlex

#pragma once

#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>
#include <utility>

#include "platform/contacts/Ebook.h"

namespace vynlex {

/// What a service answers that may never answer: it is talked to on a thread of its own, which is left to itself when
/// it has been silent for too long. GLib's calls have no time limits of their own and do not all end when they are
/// cancelled.
///
/// Use on one thread. `talk` owns what it uses.
template<typename Answer> class SlowAnswers {
public:
    using Tell = std::function<void(Answer)>;

    /// `talk` tells its answers one by one; when it returns there are no more.
    explicit SlowAnswers(std::function<void(GCancellable *, const Tell &)> talk)
        : m_thread([shared = m_shared, talk = std::move(talk)]() mutable {
            talk(shared->cancellable.get(), [&](Answer answer) {
                const std::lock_guard lock(shared->mutex);
                shared->answers.push_back(std::move(answer));
                shared->changed.notify_one();
            });
            talk = nullptr;
            const std::lock_guard lock(shared->mutex);
            shared->ended = true;
            shared->changed.notify_one();
        })
    {
    }
    SlowAnswers(const SlowAnswers &) = delete;
    SlowAnswers &operator=(const SlowAnswers &) = delete;

    /// Waits for nothing but a thread that has ended.
    ~SlowAnswers()
    {
        g_cancellable_cancel(m_shared->cancellable.get());
        if (hasEnded())
            m_thread.join();
        else
            m_thread.detach();
    }

    /// The next answer. Nothing after the last one, and after a silence of `patience`: `hasEnded` tells which.
    std::optional<Answer> next(std::chrono::milliseconds patience)
    {
        std::unique_lock lock(m_shared->mutex);
        const auto isThere = [this] { return !m_shared->answers.empty() || m_shared->ended; };
        if (!m_shared->changed.wait_for(lock, patience, isThere) || m_shared->answers.empty())
            return std::nullopt;
        Answer answer = std::move(m_shared->answers.front());
        m_shared->answers.pop_front();
        return answer;
    }

    [[nodiscard]] bool hasEnded() const
    {
        const std::lock_guard lock(m_shared->mutex);
        return m_shared->ended;
    }

private:
    struct Shared {
        const GObjectPointer<GCancellable> cancellable{g_cancellable_new()};
        std::mutex mutex;
        std::condition_variable changed;
        std::deque<Answer> answers;
        bool ended = false;
    };

    std::shared_ptr<Shared> m_shared = std::make_shared<Shared>();
    std::thread m_thread;
};

} // namespace vynlex

#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <list>
#include <map>
#include <memory>
#include <optional>
#include <thread>
#include <vector>

#include "platform/dispatch/Guarded.h"
#include "platform/dispatch/Task.h"
#include "platform/net/CurlTransfer.h"

namespace vynlex {

/// The thread that runs every session's transfers on one curl multi handle, and with it one pool of idle connections.
///
/// It ends with the last session. Its functions are for any thread.
class CurlWorker {
public:
    /// Called on the worker.
    using Answer = std::function<void(const TransferOutcome &)>;

    /// The process's worker; made when there is none.
    static std::shared_ptr<CurlWorker> shared();

    CurlWorker();
    /// Drops what is under way and waits for the thread, which by then has nothing to wait for itself.
    ~CurlWorker();
    CurlWorker(const CurlWorker &) = delete;
    CurlWorker &operator=(const CurlWorker &) = delete;

    [[nodiscard]] std::uint64_t newSession();
    void start(std::uint64_t session, TransferOrder order, Answer answer);
    /// Drops the session's transfers; their answers may still come for a moment.
    void drop(std::uint64_t session);

private:
    using Instant = std::chrono::steady_clock::time_point;

    struct Job {
        std::uint64_t session = 0;
        QByteArray host;
        TransferOrder order;
        Answer answer;
        std::optional<Instant> deadline;
        std::unique_ptr<CurlTransfer> transfer; ///< Null while it waits for its turn.
    };
    struct Inbox {
        std::vector<std::function<void(CurlWorker &)>> commands;
        std::uint64_t lastSession = 0;
        bool stop = false;
    };

    void command(std::function<void(CurlWorker &)> function);
    void run();
    [[nodiscard]] bool takeCommands();
    void startWaiting();
    bool finishDone();
    bool expire();
    void end(std::list<Job>::iterator job, const TransferOutcome &outcome);
    std::list<Job>::iterator remove(std::list<Job>::iterator job);
    [[nodiscard]] int waitMs() const;

    std::unique_ptr<CURLM, decltype(&curl_multi_cleanup)> m_multi;
    Guarded<Inbox> m_inbox;
    std::list<Job> m_jobs; ///< In the order of their starts. This and what follows is the thread's own.
    std::map<std::pair<std::uint64_t, QByteArray>, int> m_active;
    std::thread m_thread;
};

} // namespace vynlex

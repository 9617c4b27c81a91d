#include "platform/net/CurlWorker.h"

#include <algorithm>
#include <csignal>

namespace vynlex {
namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

/// curl's default is four times the transfers under way, which closes connections as a burst ends.
constexpr long idleConnections = 64;

constexpr milliseconds longestWait{60'000};

} // namespace

std::shared_ptr<CurlWorker> CurlWorker::shared()
{
    static auto *const current = new Guarded<std::weak_ptr<CurlWorker>>;
    return current->with([](std::weak_ptr<CurlWorker> &known) {
        auto worker = known.lock();
        if (!worker) {
            worker = std::make_shared<CurlWorker>();
            known = worker;
        }
        return worker;
    });
}

CurlWorker::CurlWorker()
    : m_multi((curl_global_init(CURL_GLOBAL_DEFAULT), curl_multi_init()), curl_multi_cleanup)
{
    curl_multi_setopt(m_multi.get(), CURLMOPT_MAXCONNECTS, idleConnections);
    m_thread = std::thread([this] { run(); });
}

CurlWorker::~CurlWorker()
{
    m_inbox.with([](Inbox &inbox) { inbox.stop = true; });
    curl_multi_wakeup(m_multi.get());
    m_thread.join();
}

std::uint64_t CurlWorker::newSession()
{
    return m_inbox.with([](Inbox &inbox) { return ++inbox.lastSession; });
}

void CurlWorker::start(std::uint64_t session, TransferOrder order, Answer answer)
{
    std::optional<Instant> deadline;
    if (order.request.timeout)
        deadline = steady_clock::now() + *order.request.timeout;
    command([session, order = std::move(order), answer = std::move(answer), deadline](CurlWorker &worker) {
        if (const auto fault = order.fault()) {
            answer(tl::unexpected(*fault));
            return;
        }
        worker.m_jobs.push_back({session, order.host(), order, answer, deadline, nullptr});
    });
}

void CurlWorker::drop(std::uint64_t session)
{
    command([session](CurlWorker &worker) {
        for (auto job = worker.m_jobs.begin(); job != worker.m_jobs.end();)
            job = job->session == session ? worker.remove(job) : std::next(job);
    });
}

void CurlWorker::command(std::function<void(CurlWorker &)> function)
{
    m_inbox.with([&](Inbox &inbox) { inbox.commands.push_back(std::move(function)); });
    curl_multi_wakeup(m_multi.get());
}

void CurlWorker::run()
{
    // OpenSSL writes with plain write(): a connection that the server has closed must not end the process.
    sigset_t blocked;
    sigemptyset(&blocked);
    sigaddset(&blocked, SIGPIPE);
    pthread_sigmask(SIG_BLOCK, &blocked, nullptr);

    while (takeCommands()) {
        startWaiting();
        int running = 0;
        curl_multi_perform(m_multi.get(), &running);
        const bool someAreDone = finishDone();
        const bool someAreLate = expire();
        if (someAreDone || someAreLate)
            continue; // A place may be free for one that waits.
        curl_multi_poll(m_multi.get(), nullptr, 0, waitMs(), nullptr);
    }
    for (auto job = m_jobs.begin(); job != m_jobs.end();)
        job = remove(job);
}

bool CurlWorker::takeCommands()
{
    bool stop = false;
    const auto commands = m_inbox.with([&](Inbox &inbox) {
        stop = inbox.stop;
        return std::exchange(inbox.commands, {});
    });
    for (const auto &function : commands)
        function(*this);
    return !stop;
}

void CurlWorker::startWaiting()
{
    for (Job &job : m_jobs) {
        if (job.transfer)
            continue;
        int &active = m_active[{job.session, job.host}];
        if (active >= std::max(1, job.order.session->maximumConnectionsPerHost))
            continue;
        ++active;
        job.transfer = std::make_unique<CurlTransfer>(job.order);
        curl_multi_add_handle(m_multi.get(), job.transfer->handle());
    }
}

bool CurlWorker::finishDone()
{
    bool any = false;
    int left = 0;
    while (const CURLMsg *message = curl_multi_info_read(m_multi.get(), &left)) {
        if (message->msg != CURLMSG_DONE)
            continue;
        const CURL *const handle = message->easy_handle;
        const CURLcode result = message->data.result; // The message is gone once the handle is removed.
        const auto job = std::find_if(m_jobs.begin(), m_jobs.end(), [&](const Job &candidate) {
            return candidate.transfer && candidate.transfer->handle() == handle;
        });
        if (job == m_jobs.end())
            continue;
        end(job, job->transfer->outcome(result));
        any = true;
    }
    return any;
}

bool CurlWorker::expire()
{
    const Instant now = steady_clock::now();
    bool any = false;
    for (auto job = m_jobs.begin(); job != m_jobs.end();) {
        const auto next = std::next(job);
        if (job->deadline && *job->deadline <= now) {
            any = true;
            end(job, tl::unexpected(TransportError{
                         TransportError::Kind::Timeout,
                         QStringLiteral("%1: no complete answer in time").arg(job->order.request.url.host())}));
        }
        job = next;
    }
    return any;
}

void CurlWorker::end(std::list<Job>::iterator job, const TransferOutcome &outcome)
{
    const Answer answer = std::move(job->answer);
    remove(job);
    answer(outcome);
}

std::list<CurlWorker::Job>::iterator CurlWorker::remove(std::list<Job>::iterator job)
{
    if (job->transfer) {
        curl_multi_remove_handle(m_multi.get(), job->transfer->handle());
        const auto active = m_active.find({job->session, job->host});
        if (--active->second == 0)
            m_active.erase(active);
    }
    return m_jobs.erase(job);
}

int CurlWorker::waitMs() const
{
    milliseconds wait = longestWait;
    for (const Job &job : m_jobs) {
        if (job.deadline) // Rounded up, or the last millisecond would spin.
            wait = std::min(wait, std::chrono::ceil<milliseconds>(*job.deadline - steady_clock::now()));
    }
    return static_cast<int>(std::max(wait, milliseconds(0)).count());
}

} // namespace vynlex

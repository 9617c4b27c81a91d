#include "platform/net/CurlHttpTransport.h"

#include <unordered_map>

#include "platform/dispatch/MainQueue.h"
#include "platform/net/ConnectionPolicy.h"
#include "platform/net/CurlTransfer.h"
#include "platform/net/CurlWorker.h"

namespace vynlex {

/// The completions never leave the main thread: what they own is destroyed there, whichever way the transfer ends.
struct CurlHttpTransport::Pending {
    std::uint64_t lastRequest = 0;
    std::unordered_map<std::uint64_t, Completion> completions;
};

CurlHttpTransport::CurlHttpTransport(HttpSessionConfiguration configuration)
    : m_configuration(std::make_shared<const HttpSessionConfiguration>(std::move(configuration)))
    , m_worker(CurlWorker::shared())
    , m_pending(std::make_shared<Pending>())
    , m_session(m_worker->newSession())
{
}

CurlHttpTransport::~CurlHttpTransport()
{
    m_worker->drop(m_session);
}

void CurlHttpTransport::send(HttpRequest request, Completion completion)
{
    const std::uint64_t number = ++m_pending->lastRequest;
    m_pending->completions.emplace(number, std::move(completion));
    auto answer = [pending = std::weak_ptr(m_pending), number](const TransferOutcome &outcome) {
        MainQueue::async([pending, number, outcome] {
            auto alive = pending.lock();
            if (!alive)
                return;
            auto entry = alive->completions.extract(number);
            alive.reset(); // The completion may destroy the session.
            if (entry)
                entry.mapped()(outcome);
        });
    };
    const ConnectionPolicy policy = ConnectionPolicy::current(request.url);
    m_worker->start(m_session, TransferOrder{std::move(request), m_configuration, policy}, std::move(answer));
}

} // namespace vynlex

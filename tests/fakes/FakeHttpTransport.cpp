#include "tests/fakes/FakeHttpTransport.h"

#include <QtGlobal>

#include <utility>
#include <vector>

#include "platform/dispatch/MainQueue.h"

namespace vynlex {

struct FakeHttpNetwork::Core {
    struct Exchange {
        HttpRequest request;
        HttpSessionConfiguration configuration;
        const HttpTransport *session = nullptr; ///< Null once the session is gone.
        bool answered = false;
        HttpTransport::Completion completion;
    };
    std::vector<Exchange> exchanges;

    Exchange &at(int index)
    {
        if (index < 0 || index >= static_cast<int>(exchanges.size()))
            qFatal("HTTP request %d was asked for, and %zu have been sent", index, exchanges.size());
        return exchanges[static_cast<std::size_t>(index)];
    }

    bool complete(int index, const tl::expected<HttpResponse, TransportError> &outcome)
    {
        Exchange &exchange = at(index);
        if (std::exchange(exchange.answered, true))
            qFatal("HTTP request %d was answered twice", index);
        // Taken out: it may send more, which moves the exchanges, or destroy its session.
        const auto completion = std::exchange(exchange.completion, nullptr);
        if (!exchange.session)
            return false;
        completion(outcome);
        return true;
    }
};

namespace {

class FakeHttpTransport final : public HttpTransport {
public:
    FakeHttpTransport(std::shared_ptr<FakeHttpNetwork::Core> core, HttpSessionConfiguration configuration)
        : m_core(std::move(core))
        , m_configuration(std::move(configuration))
    {
    }

    ~FakeHttpTransport() override
    {
        std::vector<Completion> dropped; // They may own what sends or answers: not while the exchanges are walked.
        for (auto &exchange : m_core->exchanges) {
            if (exchange.session != this)
                continue;
            exchange.session = nullptr;
            dropped.push_back(std::exchange(exchange.completion, nullptr));
        }
    }

    void send(HttpRequest request, Completion completion) override
    {
        if (!MainQueue::isCurrent())
            qFatal("HttpTransport::send was called on a thread that is not the main one");
        if (!completion)
            qFatal("HttpTransport::send was given no completion");
        m_core->exchanges.push_back({std::move(request), m_configuration, this, false, std::move(completion)});
    }

private:
    std::shared_ptr<FakeHttpNetwork::Core> m_core;
    HttpSessionConfiguration m_configuration;
};

} // namespace

FakeHttpNetwork::FakeHttpNetwork()
    : m_core(std::make_shared<Core>())
{
}

FakeHttpNetwork::~FakeHttpNetwork() = default;

std::unique_ptr<HttpTransport> FakeHttpNetwork::makeSession(const HttpSessionConfiguration &configuration)
{
    return std::make_unique<FakeHttpTransport>(m_core, configuration);
}

std::function<std::unique_ptr<HttpTransport>(const HttpSessionConfiguration &)> FakeHttpNetwork::sessionFactory()
{
    return [core = m_core](const HttpSessionConfiguration &configuration) {
        return std::make_unique<FakeHttpTransport>(core, configuration);
    };
}

int FakeHttpNetwork::requestCount() const
{
    return static_cast<int>(m_core->exchanges.size());
}

HttpRequest FakeHttpNetwork::request(int index) const
{
    return m_core->at(index).request;
}

HttpRequest FakeHttpNetwork::lastRequest() const
{
    return request(requestCount() - 1);
}

HttpSessionConfiguration FakeHttpNetwork::session(int index) const
{
    return m_core->at(index).configuration;
}

bool FakeHttpNetwork::answer(int index, const HttpResponse &response)
{
    return m_core->complete(index, response);
}

bool FakeHttpNetwork::answer(int index, int status, const QByteArray &body)
{
    return answer(index, HttpResponse{status, {}, body});
}

bool FakeHttpNetwork::fail(int index, const TransportError &error)
{
    return m_core->complete(index, tl::unexpected(error));
}

} // namespace vynlex

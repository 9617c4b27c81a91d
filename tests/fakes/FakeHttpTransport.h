#pragma once

#include <QtGlobal>

#include <functional>
#include <memory>
#include <utility>
#include <vector>

#include "platform/dispatch/MainQueue.h"
#include "platform/net/HttpTransport.h"

namespace vynlex {

/// A network that the test plays: every session made here sends its requests to the same place, which records them and
/// answers when told. Main thread.
///
/// Requests are numbered from 0 in the order in which they were sent, over all sessions. Asking for one that was not
/// sent, or answering one twice, ends the test program. Nothing times out by itself.
class FakeHttpNetwork {
public:
    [[nodiscard]] std::unique_ptr<HttpTransport> makeSession(const HttpSessionConfiguration &configuration = {})
    {
        return std::make_unique<Session>(m_exchanges, configuration);
    }
    /// For a `Platform`. The network may go before the factory and its sessions.
    [[nodiscard]] std::function<std::unique_ptr<HttpTransport>(const HttpSessionConfiguration &)> sessionFactory()
    {
        return [exchanges = m_exchanges](const HttpSessionConfiguration &configuration) {
            return std::make_unique<Session>(exchanges, configuration);
        };
    }

    [[nodiscard]] int requestCount() const { return static_cast<int>(m_exchanges->size()); }
    [[nodiscard]] HttpRequest request(int index) const { return at(index).request; }
    [[nodiscard]] HttpRequest lastRequest() const { return request(requestCount() - 1); }
    /// Of the session that sent the request.
    [[nodiscard]] HttpSessionConfiguration session(int index) const { return at(index).configuration; }

    /// Runs the completion before they return; false when the session is gone and nobody hears.
    bool answer(int index, const HttpResponse &response) { return complete(index, response); }
    bool answer(int index, int status, const QByteArray &body = {})
    {
        return complete(index, HttpResponse{status, {}, body});
    }
    bool fail(int index, const TransportError &error) { return complete(index, tl::unexpected(error)); }

private:
    struct Exchange {
        HttpRequest request;
        HttpSessionConfiguration configuration;
        const HttpTransport *session = nullptr; ///< Null once the session is gone.
        bool answered = false;
        HttpTransport::Completion completion;
    };
    using Exchanges = std::vector<Exchange>;

    class Session final : public HttpTransport {
    public:
        Session(std::shared_ptr<Exchanges> exchanges, HttpSessionConfiguration configuration)
            : m_exchanges(std::move(exchanges))
            , m_configuration(std::move(configuration))
        {
        }

        ~Session() override
        {
            std::vector<Completion> dropped; // They may own what sends or answers: not while the exchanges are walked.
            for (Exchange &exchange : *m_exchanges) {
                if (exchange.session != this)
                    continue;
                exchange.session = nullptr;
                dropped.push_back(std::exchange(exchange.completion, nullptr));
            }
        }

        void send(HttpRequest request, Completion completion) override
        {
            if (!MainQueue::isCurrent() || !completion)
                qFatal("HttpTransport::send belongs to the main thread, and takes a completion");
            m_exchanges->push_back({std::move(request), m_configuration, this, false, std::move(completion)});
        }

    private:
        std::shared_ptr<Exchanges> m_exchanges;
        HttpSessionConfiguration m_configuration;
    };

    [[nodiscard]] Exchange &at(int index) const
    {
        if (index < 0 || index >= requestCount())
            qFatal("HTTP request %d was asked for, and %d have been sent", index, requestCount());
        return (*m_exchanges)[static_cast<std::size_t>(index)];
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

    const std::shared_ptr<Exchanges> m_exchanges = std::make_shared<Exchanges>();
};

} // namespace vynlex

#pragma once

#include "platform/net/BeastSocketWorker.h"

namespace vynlex {

/// The shipped worker, which shows `tap` each request and the handler of its events before the client connects: to be
/// changed, or to be listened to.
class TappedSockets final : public SocketWorker {
public:
    using Tap = std::function<void(WebSocketRequest &, WebSocketClient::Handler &)>;

    explicit TappedSockets(Tap tap)
        : m_tap(std::move(tap))
    {
    }
    /// Clients connect to one port on loopback, without TLS, whatever they are asked for.
    [[nodiscard]] static std::shared_ptr<TappedSockets> toLoopback(quint16 port)
    {
        return std::make_shared<TappedSockets>([port](WebSocketRequest &request, const WebSocketClient::Handler &) {
            request.url.setScheme(QStringLiteral("ws"));
            request.url.setHost(QStringLiteral("127.0.0.1"));
            request.url.setPort(port);
        });
    }

    void post(Task task) override { m_worker.post(std::move(task)); }
    [[nodiscard]] std::unique_ptr<Timer> after(std::chrono::milliseconds delay, Task task) override
    {
        return m_worker.after(delay, std::move(task));
    }
    [[nodiscard]] std::chrono::steady_clock::time_point now() const override { return m_worker.now(); }
    [[nodiscard]] std::unique_ptr<WebSocketClient> makeClient() override
    {
        return std::make_unique<Client>(m_worker.makeClient(), m_tap);
    }

private:
    class Client final : public WebSocketClient {
    public:
        Client(std::unique_ptr<WebSocketClient> client, Tap tap)
            : m_client(std::move(client))
            , m_tap(std::move(tap))
        {
        }
        void connect(WebSocketRequest request, Handler handler) override
        {
            m_tap(request, handler);
            m_client->connect(std::move(request), std::move(handler));
        }
        void sendText(QByteArray utf8) override { m_client->sendText(std::move(utf8)); }
        void sendBinary(QByteArray data) override { m_client->sendBinary(std::move(data)); }
        void close(std::uint16_t code, const QByteArray &reason) override { m_client->close(code, reason); }

    private:
        std::unique_ptr<WebSocketClient> m_client;
        Tap m_tap;
    };

    Tap m_tap;
    BeastSocketWorker m_worker;
};

} // namespace vynlex

#pragma once

#include "platform/net/BeastSocketWorker.h"

namespace vynlex {

/// The shipped worker, whose clients connect to one port on loopback, without TLS, whatever they are asked for.
class LoopbackSockets final : public SocketWorker {
public:
    explicit LoopbackSockets(quint16 port)
        : m_port(port)
    {
    }

    void post(Task task) override { m_worker.post(std::move(task)); }
    [[nodiscard]] std::unique_ptr<Timer> after(std::chrono::milliseconds delay, Task task) override
    {
        return m_worker.after(delay, std::move(task));
    }
    [[nodiscard]] std::chrono::steady_clock::time_point now() const override { return m_worker.now(); }
    [[nodiscard]] std::unique_ptr<WebSocketClient> makeClient() override
    {
        return std::make_unique<Client>(m_worker.makeClient(), m_port);
    }

private:
    class Client final : public WebSocketClient {
    public:
        Client(std::unique_ptr<WebSocketClient> client, quint16 port)
            : m_client(std::move(client))
            , m_port(port)
        {
        }
        void connect(WebSocketRequest request, Handler handler) override
        {
            request.url.setScheme(QStringLiteral("ws"));
            request.url.setHost(QStringLiteral("127.0.0.1"));
            request.url.setPort(m_port);
            m_client->connect(std::move(request), std::move(handler));
        }
        void sendText(QByteArray utf8) override { m_client->sendText(std::move(utf8)); }
        void sendBinary(QByteArray data) override { m_client->sendBinary(std::move(data)); }
        void close(std::uint16_t code, const QByteArray &reason) override { m_client->close(code, reason); }

    private:
        std::unique_ptr<WebSocketClient> m_client;
        quint16 m_port;
    };

    quint16 m_port;
    BeastSocketWorker m_worker;
};

} // namespace vynlex

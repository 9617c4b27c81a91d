#pragma once

#include <QByteArray>

#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <optional>

#include "platform/net/ConnectionPolicy.h"
#include "platform/net/WebSocketClient.h"
#include <boost/asio/awaitable.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/steady_timer.hpp>
#include <boost/beast/core/tcp_stream.hpp>
#include <boost/system/error_code.hpp>

namespace vynlex {

/// One WebSocket connection at work. It belongs to its running operations, and so outlives its client for as long as
/// they take to end; it then has no handler any more. Everything on the worker.
class BeastConnection : public std::enable_shared_from_this<BeastConnection> {
public:
    explicit BeastConnection(boost::asio::io_context &loop);

    /// Absent when the request can be sent.
    [[nodiscard]] static std::optional<WebSocketError> fault(const WebSocketRequest &request);

    /// Starts the limit for connecting. `open` follows once the policy is known.
    void start(WebSocketRequest request, WebSocketClient::Handler handler);
    void open(ConnectionPolicy policy);
    void send(bool isText, QByteArray data);
    void close(std::uint16_t code, const QByteArray &reason);
    void suggestReconnect();
    /// The client is gone.
    void abandon();

private:
    enum class Phase { Idle, Connecting, Connected, Ended };

    struct Outgoing {
        enum class Kind { Text, Binary, Close };
        Kind kind = Kind::Text;
        QByteArray data; ///< Of a Close: the reason.
        std::uint16_t code = 0;
    };

    boost::asio::awaitable<void> establish();
    boost::asio::awaitable<bool> reach();
    boost::asio::awaitable<bool> tunnel();
    boost::asio::awaitable<void> overTls();
    template<typename Socket> boost::asio::awaitable<void> talk(std::shared_ptr<Socket> socket);
    template<typename Socket> boost::asio::awaitable<bool> upgrade(Socket &socket);
    template<typename Socket> boost::asio::awaitable<void> read(Socket &socket);
    template<typename Socket> boost::asio::awaitable<void> write(std::shared_ptr<Socket> socket);

    void emitEvent(const WebSocketEvent &event);
    void end(const WebSocketEvent &event);
    void fail(WebSocketError::Kind kind, const QString &what, int httpStatus = 0);
    void endOfReading(boost::system::error_code error);
    void limit(std::chrono::milliseconds time, std::function<void(BeastConnection &)> action);
    [[nodiscard]] std::uint16_t port() const;

    boost::asio::io_context &m_loop;
    boost::asio::ip::tcp::resolver m_resolver;
    boost::beast::tcp_stream m_tcp;
    boost::asio::steady_timer m_limit;
    boost::asio::steady_timer m_toWrite; ///< Never due; cancelled when there is something to write.
    WebSocketRequest m_request;
    ConnectionPolicy m_policy;
    /// Shared, so that it lives through a call in which the client is destroyed.
    std::shared_ptr<const WebSocketClient::Handler> m_handler;
    Phase m_phase = Phase::Idle;
    std::function<void()> m_drop; ///< Closes the TCP connection at once, wherever it is kept by now.
    std::deque<Outgoing> m_outgoing;
    std::optional<websocket::Disconnected> m_ownClose;  ///< What `close` was called with.
    std::optional<websocket::Disconnected> m_peerClose; ///< The peer's closing frame, once it is here.
};

} // namespace vynlex

#pragma once

#include <QByteArray>
#include <QString>
#include <QUrl>

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <variant>

#include "platform/dispatch/Clock.h"
#include "platform/dispatch/Task.h"
#include "platform/net/HttpTransport.h"

namespace vynlex {

struct WebSocketRequest {
    QUrl url; ///< wss only, or ws to a loopback address
    HttpHeaders headers;
    std::chrono::milliseconds connectTimeout{20'000}; ///< From start to the end of the upgrade.
};

struct WebSocketError {
    enum class Kind {
        InvalidUrl,
        HostNotFound,
        ConnectionFailed,
        Proxy,
        Tls,
        Timeout,
        UpgradeRefused, ///< `httpStatus` tells
        Protocol,       ///< the server broke the WebSocket protocol, or a message is over the limit
        Io,             ///< lost in the middle
    };
    Kind kind = Kind::Io;
    int httpStatus = 0;
    QString message; ///< Never a header or a query value.
};

namespace websocket {

struct Connected {
    HttpHeaders headers;
};
/// The closing handshake is over. `code` is the peer's, 1005 when it gave none.
struct Disconnected {
    QString reason;
    std::uint16_t code = 1000;
};
struct Text {
    QByteArray utf8; ///< valid UTF-8
};
struct Binary {
    QByteArray data;
};
struct Ping {};
struct Pong {};
struct ViabilityChanged {
    bool viable = true;
};
struct PeerClosed {}; ///< The TCP connection ended without a closing handshake. Ends the client.
struct Error {
    WebSocketError error;
}; ///< Ends the client.
struct ReconnectSuggested {
    bool suggested = true;
};                   ///< The device's network path changed while connected.
struct Cancelled {}; ///< `close` was called before the connection stood. Ends the client.

} // namespace websocket

using WebSocketEvent =
    std::variant<websocket::Connected, websocket::Disconnected, websocket::Text, websocket::Binary, websocket::Ping,
                 websocket::Pong, websocket::ViabilityChanged, websocket::PeerClosed, websocket::Error,
                 websocket::ReconnectSuggested, websocket::Cancelled>;

/// Port: one WebSocket connection. Answers pings with pongs by itself; offers no compression and no subprotocol; a
/// message may have 1 MiB.
///
/// All functions are called on the socket worker, and the handler runs there, never before the call that caused the
/// event returns. Exactly one of Disconnected, PeerClosed, Error, Cancelled ends the client; nothing comes after it.
/// Destroying the client drops the connection and calls nobody; the handler may destroy the client.
class WebSocketClient {
public:
    using Handler = std::function<void(const WebSocketEvent &)>;

    static constexpr qint64 maximumMessageBytes = 1024 * 1024;

    virtual ~WebSocketClient() = default;

    /// Once. Messages sent before Connected wait for it.
    virtual void connect(WebSocketRequest request, Handler handler) = 0;
    virtual void sendText(QByteArray utf8) = 0;
    virtual void sendBinary(QByteArray data) = 0;
    /// Starts the closing handshake after what was sent; it has 5 s, then Disconnected comes anyway, with `code`.
    /// Messages that arrive meanwhile are dropped.
    virtual void close(std::uint16_t code, const QByteArray &reason) = 0;
};

/// Port: the one thread on which all sockets live, with its timers. The shipped worker is a thread of its own; a test's
/// worker runs when told, on the test's thread, with a clock that the test moves.
class SocketWorker {
public:
    virtual ~SocketWorker() = default;

    /// Runs `task` on the worker, in order, never before the call returns. Any thread.
    virtual void post(Task task) = 0;

    /// The rest is called on the worker. A timer's task runs there too, and may destroy the timer.
    [[nodiscard]] virtual std::unique_ptr<Timer> after(std::chrono::milliseconds delay, Task task) = 0;
    [[nodiscard]] virtual std::chrono::steady_clock::time_point now() const = 0;
    [[nodiscard]] virtual std::unique_ptr<WebSocketClient> makeClient() = 0;
};

} // namespace vynlex

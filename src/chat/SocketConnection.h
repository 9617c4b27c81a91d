#pragma once

#include <QByteArray>

#include <cstdint>
#include <functional>
#include <memory>

#include "platform/dispatch/Lifetime.h"
#include "platform/net/WebSocketClient.h"

namespace vynlex {

/// A WebSocket as the main thread has it: the client stays on the socket worker, its events come to the main queue.
///
/// Connects when it is made. Destroying it drops the connection, and events that are under way reach nobody; its
/// handler may do that. Main thread.
class SocketConnection {
public:
    using Handler = std::function<void(const WebSocketEvent &, SocketConnection &)>;

    SocketConnection(WebSocketRequest request, Handler handler);
    ~SocketConnection();
    SocketConnection(const SocketConnection &) = delete;
    SocketConnection &operator=(const SocketConnection &) = delete;

    /// As one binary frame.
    void write(const QByteArray &data);
    /// The closing handshake; the handler is told when it is over.
    void disconnect(std::uint16_t closeCode);

private:
    std::shared_ptr<SocketWorker> m_worker;
    std::shared_ptr<std::unique_ptr<WebSocketClient>> m_client; ///< For the worker alone.
    Lifetime m_lifetime;
};

} // namespace vynlex

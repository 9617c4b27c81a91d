#pragma once

#include <boost/asio/any_io_executor.hpp>
#include <boost/asio/awaitable.hpp>

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace sandbox {

struct WebSocketMessage {
    bool binary = false;
    std::string data;
};

/// One accepted WebSocket, whatever carries it and whatever faults are switched on beneath it. All on its executor (a
/// strand); one reader and any number of writers (messages go out whole, in the order of the calls).
class WebSocketConnection {
public:
    virtual ~WebSocketConnection() = default;

    /// The next message, or nothing once the peer has closed or the connection is lost. Never throws.
    virtual boost::asio::awaitable<std::optional<WebSocketMessage>> read() = 0;

    /// A message to a connection that is gone is dropped. Never throws.
    virtual boost::asio::awaitable<void> sendText(std::string data) = 0;
    virtual boost::asio::awaitable<void> sendBinary(std::string data) = 0;
    virtual boost::asio::awaitable<void> close(std::uint16_t code, std::string_view reason) = 0;

    /// Drops the TCP connection with a reset.
    virtual void reset() = 0;

    virtual boost::asio::any_io_executor executor() = 0;
};

} // namespace sandbox

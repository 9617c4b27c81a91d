#pragma once

#include <boost/asio/io_context.hpp>
#include <boost/asio/redirect_error.hpp>
#include <boost/asio/steady_timer.hpp>
#include <boost/asio/use_awaitable.hpp>

#include <deque>
#include <optional>
#include <string>
#include <vector>

#include "sandbox/server/WebSocketConnection.h"

namespace sandbox::test {

/// A WebSocket whose peer is the test: what it has said is read, what is sent to it is kept.
class MemoryConnection final : public WebSocketConnection {
public:
    explicit MemoryConnection(boost::asio::io_context &io)
        : m_io(io)
        , m_arrival(io, boost::asio::steady_timer::time_point::max())
    {
    }

    struct Closed {
        std::uint16_t code = 0; ///< 0: dropped with a reset
        std::string reason;
    };

    // The peer's side.
    void say(WebSocketMessage message)
    {
        m_inbox.push_back(std::move(message));
        m_arrival.cancel();
    }
    void hangUp()
    {
        m_gone = true;
        m_arrival.cancel();
    }
    void hangUpWhenAllIsRead()
    {
        m_hangsUp = true;
        m_arrival.cancel();
    }
    [[nodiscard]] bool allRead() const { return m_inbox.empty(); }
    std::vector<WebSocketMessage> sent;
    std::optional<Closed> closed; ///< by the server

    // The server's side.
    boost::asio::awaitable<std::optional<WebSocketMessage>> read() override
    {
        while (m_inbox.empty() && !m_gone && !m_hangsUp && !closed) {
            boost::system::error_code woken;
            co_await m_arrival.async_wait(boost::asio::redirect_error(boost::asio::use_awaitable, woken));
        }
        if (closed || m_gone || m_inbox.empty()) {
            m_gone = true;
            co_return std::nullopt;
        }
        auto message = std::move(m_inbox.front());
        m_inbox.pop_front();
        co_return message;
    }
    boost::asio::awaitable<void> sendText(std::string data) override
    {
        if (!closed && !m_gone)
            sent.push_back({false, std::move(data)});
        co_return;
    }
    boost::asio::awaitable<void> sendBinary(std::string data) override
    {
        if (!closed && !m_gone)
            sent.push_back({true, std::move(data)});
        co_return;
    }
    boost::asio::awaitable<void> close(std::uint16_t code, std::string_view reason) override
    {
        end({code, std::string(reason)});
        co_return;
    }
    void reset() override { end({}); }
    boost::asio::any_io_executor executor() override { return m_io.get_executor(); }

private:
    void end(Closed how)
    {
        if (!closed)
            closed = std::move(how);
        m_arrival.cancel();
    }

    boost::asio::io_context &m_io;
    boost::asio::steady_timer m_arrival;
    std::deque<WebSocketMessage> m_inbox;
    bool m_gone = false;
    bool m_hangsUp = false;
};

} // namespace sandbox::test

#pragma once

#include <boost/asio/steady_timer.hpp>

#include <chrono>
#include <memory>

#include "sandbox/server/WebSocketConnection.h"

namespace sandbox {

/// Ends connections as the service does, without a word: after 180 s without a message, and after 10 minutes in all.
class ConnectionLimits {
public:
    explicit ConnectionLimits(const std::shared_ptr<WebSocketConnection> &connection)
        : m_idle(connection->executor())
        , m_total(connection->executor())
        , m_connection(connection)
    {
        arm(m_total, std::chrono::minutes(10));
        messageArrived();
    }

    void messageArrived() { arm(m_idle, std::chrono::seconds(180)); }

private:
    void arm(boost::asio::steady_timer &timer, std::chrono::seconds limit)
    {
        timer.expires_after(limit);
        timer.async_wait([weak = m_connection](boost::system::error_code error) {
            const auto connection = weak.lock();
            if (!error && connection)
                connection->reset();
        });
    }

    boost::asio::steady_timer m_idle;
    boost::asio::steady_timer m_total;
    std::weak_ptr<WebSocketConnection> m_connection;
};

} // namespace sandbox

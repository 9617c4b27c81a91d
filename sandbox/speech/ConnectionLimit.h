#pragma once

#include <boost/asio/steady_timer.hpp>

#include <chrono>
#include <memory>

#include "sandbox/server/WebSocketConnection.h"

namespace sandbox {

/// Drops a connection that has lasted its time, without a word, as the service does.
class ConnectionLimit {
public:
    ConnectionLimit(const std::shared_ptr<WebSocketConnection> &connection, std::chrono::milliseconds limit)
        : m_timer(connection->executor(), limit)
    {
        m_timer.async_wait([weak = std::weak_ptr(connection)](boost::system::error_code error) {
            const auto still = weak.lock();
            if (!error && still)
                still->reset();
        });
    }

private:
    boost::asio::steady_timer m_timer;
};

} // namespace sandbox

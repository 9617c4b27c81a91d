#pragma once

#include <boost/asio/awaitable.hpp>
#include <boost/json/object.hpp>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "sandbox/backend/BackendApi.h"
#include "sandbox/backend/ClientFrame.h"
#include "sandbox/backend/PushHub.h"
#include "sandbox/server/ServerContext.h"

namespace sandbox {

struct SocketLimits {
    std::chrono::seconds silence{60}; ///< of the client; then it is dropped
    /// What may wait for a client that reads more slowly than it is told things; beyond that it is dropped. Room for
    /// what a page of messages causes when it is read, and for the longest messages there are.
    std::size_t waitingFrames = 1024;
    std::size_t waitingBytes = std::size_t{16} * 1024 * 1024;
};

/// What the sockets of one backend share. All must outlive them.
struct SocketService {
    ServerContext &server;
    BackendApi &api;
    SocketLimits limits;
    PushHub hub = {};
};

/// One open socket: of nobody until a good login, and of the user of the last good one from then on.
///
/// The interface has no answer for a client's mistakes. They change nothing here, are counted, and go to the log of
/// the server. All on the connection's executor; shared, because the reading and the writing side end independently.
class SocketSession : public std::enable_shared_from_this<SocketSession> {
public:
    SocketSession(std::shared_ptr<SocketService> service, std::shared_ptr<WebSocketConnection> connection,
                  std::string host);

    /// Returns when the connection is over.
    boost::asio::awaitable<void> serve();

    [[nodiscard]] bool isOfOneOf(const std::vector<std::string> &userIds) const;
    void push(const PushFrame &frame);

    /// {"id", "host", "userId" (null: nobody yet), "logins", "refusedLogins", "keepAlives", "problems", "waiting",
    ///  "pushed": {event: count}, "acknowledged": {event: count}}. "waiting" frames are not counted as pushed yet.
    [[nodiscard]] boost::json::object state() const;

private:
    using Counts = std::map<std::string_view, std::uint64_t>; ///< by event

    boost::asio::awaitable<void> take(WebSocketMessage message);
    boost::asio::awaitable<void> logIn(std::string token);
    void acknowledge(const std::string &event);
    boost::asio::awaitable<void> write();
    void addProblem(std::string_view what);
    void report(std::string_view what);

    std::shared_ptr<SocketService> m_service;
    std::shared_ptr<WebSocketConnection> m_connection;
    std::uint64_t m_number;
    std::string m_host;
    std::string m_userId;

    std::deque<PushFrame> m_waiting;
    std::size_t m_waitingBytes = 0;
    bool m_writing = false;
    bool m_dropped = false;

    std::uint64_t m_logins = 0;
    std::uint64_t m_refusedLogins = 0;
    std::uint64_t m_keepAlives = 0;
    std::uint64_t m_problems = 0;
    Counts m_pushed;
    Counts m_acknowledged; ///< of what was pushed only, and never more often than that
};

} // namespace sandbox

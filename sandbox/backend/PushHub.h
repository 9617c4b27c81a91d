#pragma once

#include <boost/json/array.hpp>

#include <cstdint>
#include <vector>

#include "sandbox/backend/Push.h"

namespace sandbox {

class SocketSession;

/// The open sockets of the backend. On the server's I/O thread.
class PushHub {
public:
    /// Has a socket told about for as long as it lives. Both must outlive it.
    class Membership {
    public:
        Membership(PushHub &hub, SocketSession &session);
        ~Membership();
        Membership(const Membership &) = delete;
        Membership &operator=(const Membership &) = delete;

    private:
        PushHub &m_hub;
        SocketSession &m_session;
    };

    [[nodiscard]] std::uint64_t nextNumber() { return ++m_lastNumber; }

    /// To every session of each user named, in this order.
    void push(const std::vector<Push> &pushes);

    /// SocketSession::state of each, in the order in which they were opened.
    [[nodiscard]] boost::json::array state() const;

private:
    std::vector<SocketSession *> m_sessions;
    std::uint64_t m_lastNumber = 0;
};

} // namespace sandbox

#include "sandbox/backend/PushHub.h"

#include "sandbox/backend/SocketSession.h"

namespace sandbox {

PushHub::Membership::Membership(PushHub &hub, SocketSession &session)
    : m_hub(hub)
    , m_session(session)
{
    m_hub.m_sessions.push_back(&m_session);
}

PushHub::Membership::~Membership()
{
    std::erase(m_hub.m_sessions, &m_session);
}

void PushHub::push(const std::vector<Push> &pushes)
{
    for (const Push &push : pushes) {
        for (SocketSession *session : m_sessions) {
            if (session->isOfOneOf(push.userIds))
                session->push(push.frame);
        }
    }
}

boost::json::array PushHub::state() const
{
    boost::json::array all;
    for (const SocketSession *session : m_sessions)
        all.push_back(session->state());
    return all;
}

} // namespace sandbox

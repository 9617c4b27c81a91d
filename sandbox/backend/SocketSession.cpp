#include "sandbox/backend/SocketSession.h"

#include <boost/asio/co_spawn.hpp>
#include <boost/asio/detached.hpp>

#include <algorithm>
#include <utility>
#include <variant>

namespace sandbox {

namespace asio = boost::asio;
namespace json = boost::json;

namespace {

template<class Counts> json::object shown(const Counts &counts)
{
    json::object object;
    for (const auto &[event, count] : counts)
        object[event] = count;
    return object;
}

} // namespace

SocketSession::SocketSession(std::shared_ptr<SocketService> service, std::shared_ptr<WebSocketConnection> connection,
                             std::string host)
    : m_service(std::move(service))
    , m_connection(std::move(connection))
    , m_number(m_service->hub.nextNumber())
    , m_host(std::move(host))
{
}

asio::awaitable<void> SocketSession::serve()
{
    const auto self = shared_from_this();
    const PushHub::Membership membership(m_service->hub, *this);
    for (;;) {
        auto message = co_await m_connection->read();
        if (!message)
            break;
        co_await take(*std::move(message));
    }
    m_waiting.clear();
}

asio::awaitable<void> SocketSession::take(WebSocketMessage message)
{
    auto frame = readClientFrame(message);
    if (!frame)
        addProblem(frame.error());
    else if (auto *login = std::get_if<LoginFrame>(&*frame))
        co_await logIn(std::move(login->token));
    else if (const auto *acknowledgement = std::get_if<AcknowledgementFrame>(&*frame))
        acknowledge(acknowledgement->event);
    else
        ++m_keepAlives;
}

asio::awaitable<void> SocketSession::logIn(std::string token)
{
    auto work = [&api = m_service->api, token = std::move(token)] { return api.userOf(token); };
    auto user = co_await m_service->server.offload(std::move(work));
    if (user) {
        m_userId = std::move(user->id);
        ++m_logins;
    } else {
        ++m_refusedLogins;
        report("login: " + user.error().code);
    }
}

void SocketSession::acknowledge(const std::string &event)
{
    const auto pushed = m_pushed.find(event);
    if (pushed == m_pushed.end() || m_acknowledged[pushed->first] == pushed->second)
        addProblem("ack: data.originalEvent: nothing of that name is left to acknowledge");
    else
        ++m_acknowledged[pushed->first];
}

bool SocketSession::isOfOneOf(const std::vector<std::string> &userIds) const
{
    return std::find(userIds.begin(), userIds.end(), m_userId) != userIds.end();
}

void SocketSession::push(const PushFrame &frame)
{
    if (m_dropped)
        return;
    m_waiting.push_back(frame);
    m_waitingBytes += frame.text->size();
    if (m_waiting.size() > m_service->limits.waitingFrames || m_waitingBytes > m_service->limits.waitingBytes) {
        m_dropped = true;
        addProblem("does not read: dropped with " + std::to_string(m_waiting.size()) + " frames waiting");
        m_waiting.clear();
        m_connection->reset();
        return;
    }
    if (!std::exchange(m_writing, true)) {
        const auto writing = [](std::shared_ptr<SocketSession> self) -> asio::awaitable<void> {
            co_await self->write();
        };
        asio::co_spawn(m_connection->executor(), writing(shared_from_this()), asio::detached);
    }
}

asio::awaitable<void> SocketSession::write()
{
    while (!m_waiting.empty()) {
        const PushFrame frame = std::move(m_waiting.front());
        m_waiting.pop_front();
        m_waitingBytes -= frame.text->size();
        ++m_pushed[frame.event]; // before it is out: the acknowledgement may be read before the writing goes on
        co_await m_connection->sendText(*frame.text);
    }
    m_writing = false;
}

json::object SocketSession::state() const
{
    json::object object;
    object["id"] = m_number;
    object["host"] = m_host;
    object["userId"] = m_userId.empty() ? json::value(nullptr) : json::value(m_userId);
    object["logins"] = m_logins;
    object["refusedLogins"] = m_refusedLogins;
    object["keepAlives"] = m_keepAlives;
    object["problems"] = m_problems;
    object["waiting"] = m_waiting.size();
    object["pushed"] = shown(m_pushed);
    object["acknowledged"] = shown(m_acknowledged);
    return object;
}

void SocketSession::addProblem(std::string_view what)
{
    ++m_problems;
    report(what);
}

void SocketSession::report(std::string_view what)
{
    m_service->server.log.addProblem(m_host + "/ws session " + std::to_string(m_number), what);
}

} // namespace sandbox

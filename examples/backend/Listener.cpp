#include "Listener.h"

#include <QTextStream>
#include <QTimer>

#include <algorithm>
#include <chrono>

#include "Table.h"
#include "api/JwtUserId.h"

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using namespace vynlex;

namespace {

constexpr auto limit = 20s;
constexpr auto interval = 20ms;

} // namespace

Listener::Listener(const examples::SandboxProcess &sandbox)
    : m_sandbox(sandbox)
{
}

void Listener::start(const QString &userId, const Then &then)
{
    m_api.getJWToken(u"web-token-"_s + userId, [this, then](const VLApiResult<VLTokenResponse> &token) {
        if (!token || !token->jwt)
            return then(u"The other person cannot be signed in."_s);
        m_api.setCredentials(userIdOfJwt(*token->jwt), *token->jwt);
        m_session = std::make_unique<VLWebSocketManager>(m_api.currentEnv, m_api.currentJWT);
        m_session->onNewChatMessage = [this](const VLChatMessage &message) { m_heard.push_back(message); };
        m_session->isConnectedToNetwork = true;
        m_session->connect();
        const auto loggedIn = [this] { return !socket().userId.isEmpty(); }; // no answer tells of a login
        when(loggedIn, u"The other person is not let in at the socket."_s, QDeadlineTimer(limit), then);
    });
}

void Listener::report(const QString &messageId, const Then &then)
{
    const auto done = [this, messageId] { return hasHeard(messageId) && socket().acknowledged == socket().pushed; };
    const QString failure = u"The message does not come over the socket, or is not acknowledged."_s;
    when(done, failure, QDeadlineTimer(limit), [this, then](const std::optional<QString> &problem) {
        if (problem)
            return then(problem);
        Table table(u"Heard by %1 over the socket meanwhile"_s.arg(m_api.currentUserGuestID),
                    {u"Sent"_s, u"By"_s, u"Text"_s});
        for (const VLChatMessage &message : m_heard)
            table.addRow({message.createdAtString, message.creatorsName, message.messageText});
        const auto state = socket();
        QTextStream(stdout) << table.text() << Qt::endl
                            << u"Pushed: %1, acknowledged: %2, mistakes found by the sandbox: %3"_s.arg(state.pushed)
                                   .arg(state.acknowledged)
                                   .arg(state.problems)
                            << Qt::endl;
        then(std::nullopt);
    });
}

examples::SandboxProcess::Socket Listener::socket() const
{
    const auto all = m_sandbox.sockets();
    const auto own =
        std::find_if(all.begin(), all.end(), [&](const auto &one) { return one.userId == m_api.currentUserGuestID; });
    return own == all.end() ? examples::SandboxProcess::Socket() : *own;
}

bool Listener::hasHeard(const QString &messageId) const
{
    return std::any_of(m_heard.begin(), m_heard.end(), [&](const auto &message) { return message.id == messageId; });
}

void Listener::when(const std::function<bool()> &condition, const QString &problem, QDeadlineTimer deadline,
                    const Then &then)
{
    if (condition())
        return then(std::nullopt);
    if (deadline.hasExpired())
        return then(problem);
    QTimer::singleShot(interval, &m_context, [=, this] { when(condition, problem, deadline, then); });
}

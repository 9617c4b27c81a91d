#include "OtherPerson.h"

#include "BackendAnswer.h"
#include "api/JwtUserId.h"

using namespace Qt::StringLiterals;
using namespace vynlex;

namespace host {

OtherPerson::OtherPerson(Person person)
    : m_person(std::move(person))
{
}

tl::expected<std::unique_ptr<OtherPerson>, QString> OtherPerson::signIn(const Person &person)
{
    std::unique_ptr<OtherPerson> other(new OtherPerson(person));
    const auto token = answerTo<VLTokenResponse>([&](VLApiCompletion<VLTokenResponse> completion) {
        other->m_api.getJWToken(person.webToken(), std::move(completion));
    });
    if (!token || !token->jwt)
        return tl::unexpected(
            u"%1 cannot sign in: %2"_s.arg(person.user.name, token ? u"the answer holds no token."_s : token.error()));
    other->m_api.setCredentials(userIdOfJwt(*token->jwt), *token->jwt);
    return other;
}

tl::expected<QString, QString> OtherPerson::threadWith(const User &user)
{
    return answerTo<VLChatThread>([&](VLApiCompletion<VLChatThread> completion) {
               m_api.getPrivateChatThread(user.id, m_person.user.id, std::move(completion));
           })
        .map([](const VLChatThread &thread) { return thread.id; });
}

tl::expected<QString, QString> OtherPerson::send(const User &to, const QString &wireText)
{
    return threadWith(to)
        .and_then([&](const QString &thread) {
            return answerTo<VLChatMessage>([&](VLApiCompletion<VLChatMessage> completion) {
                m_api.sendChatMessage(thread, wireText, {}, std::move(completion));
            });
        })
        .map([](const VLChatMessage &message) { return message.id; });
}

tl::expected<QString, QString> OtherPerson::textOf(const QString &messageId, const User &with)
{
    return threadWith(with).and_then([&](const QString &thread) { return storedText(m_api, thread, messageId); });
}

} // namespace host

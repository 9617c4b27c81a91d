#include "BackendAnswer.h"

#include <algorithm>

using namespace Qt::StringLiterals;
using namespace vynlex;

namespace host {

tl::expected<QString, QString> storedText(VLApiManager &api, const QString &threadId, const QString &messageId)
{
    const auto page = answerTo<VLThreadChatMessages>([&](VLApiCompletion<VLThreadChatMessages> completion) {
        api.getChatMessages(threadId, std::move(completion));
    });
    if (!page)
        return tl::unexpected(page.error());
    const auto messages = page->messages.value_or(std::vector<VLChatMessage>());
    const auto message = std::ranges::find(messages, messageId, &VLChatMessage::id);
    if (message == messages.end())
        return tl::unexpected(u"the backend has no message %1."_s.arg(messageId));
    return message->messageText;
}

} // namespace host

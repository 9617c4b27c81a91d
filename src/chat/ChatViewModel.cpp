#include "chat/ChatViewModel.h"

#include <algorithm>
#include <utility>

#include "api/VLApiManager.h"

namespace vynlex {

ChatViewModel::ChatViewModel()
    : ChatViewModel(VLApiManager::shared())
{
}

ChatViewModel::ChatViewModel(VLApiManager &api)
    : m_api(api)
{
}

ChatViewModel &ChatViewModel::shared()
{
    static auto *const instance = new ChatViewModel;
    return *instance;
}

void ChatViewModel::openPrivateThread(const QString &userId)
{
    receivedID = userId;
    m_api.getPrivateChatThread(userId, m_api.currentUserGuestID,
                               m_lifetime.guard([this, userId](const VLApiResult<VLChatThread> &answer) {
                                   if (!answer || receivedID != userId)
                                       return;
                                   threadID = answer->id;
                                   m_threadWith = userId;
                                   fetchMessages();
                               }));
}

void ChatViewModel::fetchMessages()
{
    m_api.getChatMessages(threadID, m_lifetime.guard([this, userId = receivedID, fetch = ++m_fetch](
                                                         const VLApiResult<VLThreadChatMessages> &answer) {
        // One that was overtaken, as by leaving the chat and opening it again, would take new messages away.
        if (!answer || receivedID != userId || fetch < m_fetchShown)
            return;
        m_fetchShown = fetch;
        aryMessages = answer->messages.value_or(std::vector<VLChatMessage>());
        std::ranges::reverse(aryMessages);
        refresh();
    }));
}

void ChatViewModel::receiveSocketMessage(const VLChatMessage &message)
{
    if (message.creatorId == receivedID)
        append(message);
}

void ChatViewModel::messageSent(const VLApiResult<VLChatMessage> &answer)
{
    if (answer)
        append(*answer);
}

void ChatViewModel::forgetChat()
{
    aryMessages.clear();
    threadID.clear();
    receivedID.clear();
    refresh();
}

void ChatViewModel::append(VLChatMessage message)
{
    message.isIncomingMessage = message.creatorId != m_api.currentUserGuestID;
    aryMessages.push_back(std::move(message));
    refresh();
}

void ChatViewModel::refresh()
{
    if (const auto screen = delegate.lock())
        screen->refreshChatData();
}

} // namespace vynlex

#include "chat/SocketManager.h"

#include "chat/ChatViewModel.h"

namespace vynlex {

SocketManager::SocketManager()
    : SocketManager(ChatViewModel::shared())
{
}

SocketManager::SocketManager(ChatViewModel &chat)
    : m_chat(chat)
{
}

SocketManager &SocketManager::shared()
{
    static auto *const instance = new SocketManager;
    return *instance;
}

void SocketManager::start()
{
    if (!webSocketManager)
        return;
    webSocketManager->isConnectedToNetwork = true;
    webSocketManager->isUserJoinedMeeting = true;
    webSocketManager->isStartedManually = true;
    webSocketManager->connect();
    webSocketManager->onNewChatMessage = [&chat = m_chat](const VLChatMessage &message) {
        chat.receiveSocketMessage(message);
    };
}

} // namespace vynlex

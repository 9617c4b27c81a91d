#pragma once

#include <memory>

#include "chat/VLWebSocketManager.h"

namespace vynlex {

class ChatViewModel;

/// Holds the process's one session with the chat's socket. Main thread.
class SocketManager {
public:
    /// Hands messages to the shared view model.
    SocketManager();
    /// `chat` outlives the manager.
    explicit SocketManager(ChatViewModel &chat);

    static SocketManager &shared();

    /// Who gets the messages.
    [[nodiscard]] ChatViewModel &chat() const { return m_chat; }

    /// Connects the session and has its messages handed to the view model. Without a session it does nothing.
    void start();

    /// Replacing it drops the connection of the one before.
    std::unique_ptr<VLWebSocketManager> webSocketManager;

private:
    ChatViewModel &m_chat;
};

} // namespace vynlex

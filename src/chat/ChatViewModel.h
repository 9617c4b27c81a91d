#pragma once

#include <VynlexTranslationSDK/VLChatDeleagate.h>

#include <QString>

#include <cstdint>
#include <memory>
#include <vector>

#include "api/ChatRecords.h"
#include "api/VLApiRequestError.h"
#include "platform/dispatch/Lifetime.h"

namespace vynlex {

class VLApiManager;

/// The messages of the open chat with one other person: fetched, received over the socket, and sent.
///
/// One instance serves every chat in turn; while the next one loads it still has the messages and the thread of the one
/// before. Every failure is silent and changes nothing, and so is an answer that comes after another chat was opened,
/// or after the answer to a later fetch. Main thread.
class ChatViewModel {
public:
    /// Of the shared API manager.
    ChatViewModel();
    /// `api` outlives the model.
    explicit ChatViewModel(VLApiManager &api);
    ChatViewModel(const ChatViewModel &) = delete;
    ChatViewModel &operator=(const ChatViewModel &) = delete;

    static ChatViewModel &shared();

    /// Gets the thread with this person, then its messages.
    void openPrivateThread(const QString &userId);
    /// The newest 150 of `threadID`, in place of those that are here. One that came over the socket meanwhile is lost
    /// if the backend's answer does not have it.
    void fetchMessages();

    /// Takes what `receivedID` wrote, in whatever thread. The user's own messages come by `messageSent` alone.
    void receiveSocketMessage(const VLChatMessage &message);
    /// The completion of sending.
    void messageSent(const VLApiResult<VLChatMessage> &answer);

    /// As a process begins: the next user must see nothing of this one's chat.
    void forgetChat();

    std::vector<VLChatMessage> aryMessages;  ///< Oldest first; never sorted, nor freed of duplicates.
    std::weak_ptr<VLChatDeleagate> delegate; ///< The screen that was opened last.
    QString threadID;
    QString receivedID; ///< The other person's user id.

    /// Whether `threadID` is the thread with `receivedID` already, not the one of the chat before.
    [[nodiscard]] bool isThreadKnown() const { return !threadID.isEmpty() && m_threadWith == receivedID; }

private:
    void append(VLChatMessage message);
    void refresh();

    VLApiManager &m_api;
    QString m_threadWith;           ///< Whom `threadID` is the thread with.
    std::uint64_t m_fetch = 0;      ///< The number of the latest.
    std::uint64_t m_fetchShown = 0; ///< Whose messages are here.
    Lifetime m_lifetime;
};

} // namespace vynlex

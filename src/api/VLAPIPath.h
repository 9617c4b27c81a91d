#pragma once

#include <QString>

#include <utility>

namespace vynlex {

/// A resource of the backend. Two of them belong to one chat thread.
class VLAPIPath {
public:
    enum class Case {
        getChatThreadMessages,
        sendChatMessage,
        getPrivateChatThread,
        uploadContacts,
        getContacts,
        getJWTToken,
        getRecentContacts,
    };

    /// The same resource as `sendChatMessage`; the verb of the request tells them apart. `threadId` goes in as it is,
    /// also when it is empty.
    static VLAPIPath getChatThreadMessages(QString threadId)
    {
        return {Case::getChatThreadMessages, std::move(threadId)};
    }
    static VLAPIPath sendChatMessage(QString threadId) { return {Case::sendChatMessage, std::move(threadId)}; }
    static VLAPIPath getPrivateChatThread() { return {Case::getPrivateChatThread}; }
    static VLAPIPath uploadContacts() { return {Case::uploadContacts}; }
    static VLAPIPath getContacts() { return {Case::getContacts}; }
    static VLAPIPath getJWTToken() { return {Case::getJWTToken}; }
    static VLAPIPath getRecentContacts() { return {Case::getRecentContacts}; }

    /// What follows "/api/", before anything is escaped.
    [[nodiscard]] QString apiPathString() const;

    bool operator==(const VLAPIPath &) const = default;

private:
    VLAPIPath(Case which, QString threadId = {})
        : m_case(which)
        , m_threadId(std::move(threadId))
    {
    }

    Case m_case;
    QString m_threadId;
};

} // namespace vynlex

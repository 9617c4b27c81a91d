#pragma once

#include <QDateTime>
#include <QString>

#include <optional>
#include <tuple>
#include <vector>

#include "platform/json/Record.h"

namespace vynlex {

/// Chat as the backend describes it, in answers and in events. Only identifiers are insisted on; anything else that is
/// missing, null or of another type is left at its default. Deliberate, field by field: an odd record is still shown.

enum class VLChatMessageType { normal, system };

enum class VLSystemChatMessageAction { usermod };

/// How a message stands with one of those who get it.
struct VLChatMessageRecipient {
    QString userId;
    bool isDeleted = false;
    bool isUnread = false;

    bool operator==(const VLChatMessageRecipient &) const = default;
};

/// A file that came with a message.
struct VLChatMessageAttachment {
    QString fileId;
    QString fileName;
    QString fileSize; ///< Text on the wire; a number there reads as nothing.
    QString downloadUrl;
    QString imageTrancodedURL;
    QString streamingUrl;
    QString documentUrl;

    bool operator==(const VLChatMessageAttachment &) const = default;
};

/// A file to send with a message.
struct VLSendAttachmentInfo {
    QString fileID;
    QString fileName;
    QString fileSize;
    QString fileURL;

    bool operator==(const VLSendAttachmentInfo &) const = default;
};

/// Somebody whom a system message names.
struct VLChatUser {
    std::optional<QString> name;
    std::optional<QString> lname;
    std::optional<QString> userId;

    bool operator==(const VLChatUser &) const = default;
};

struct VLChatMessage {
    QString createdAtString; ///< As received.
    QString id;
    QString threadId;
    VLChatMessageType messageType = VLChatMessageType::normal;
    QString conferaId;
    QString creatorId;
    QString creatorsName;
    QString creatorsLName;
    QString messageText;
    std::optional<std::vector<VLChatMessageAttachment>> attachments; ///< of normal messages
    std::optional<std::vector<VLChatUser>> addedUsers;               ///< of system messages
    std::optional<std::vector<VLChatUser>> removedUsers;             ///< of system messages
    VLSystemChatMessageAction systemAction = VLSystemChatMessageAction::usermod;
    bool isSystemMessage = false;
    bool isIncomingMessage = false; ///< For who shows it to set; the backend does not say.
    std::optional<std::vector<VLChatMessageRecipient>> reciepients;

    bool operator==(const VLChatMessage &) const = default;
};

/// A member of a thread.
struct VLChatParticipant {
    QString id;
    std::optional<QString> name;
    std::optional<QString> lname;

    bool operator==(const VLChatParticipant &) const = default;
};

struct VLChatThread {
    std::optional<QString> createdAtString; ///< As received.
    QString id;
    std::optional<QString> conferaId;
    std::optional<QString> name;
    std::optional<QString> status;
    std::optional<bool> isRestrictedChat;
    std::optional<qint64> numberOfAttachments;
    std::optional<QString> context;
    std::optional<QString> createdBy;   ///< The creator's user id.
    std::optional<QDateTime> createdAt; ///< Not on the wire in a form that is read: always absent.
    std::optional<QDateTime> modifiedAt;
    std::optional<bool> update;
    std::optional<std::vector<VLChatParticipant>> members;

    bool operator==(const VLChatThread &) const = default;
};

/// A page of a thread's messages, newest first.
struct VLThreadChatMessages {
    std::optional<std::vector<VLChatMessage>> messages; ///< Absent when a single one of them has no identifier.
    std::optional<bool> moreAvailable;
    std::optional<qint64> totalCount;
    std::optional<qint64> unreadCount;

    bool operator==(const VLThreadChatMessages &) const = default;
};

template<>
inline constexpr auto words<VLChatMessageType> = std::array{
    std::pair{VLChatMessageType::normal, QLatin1StringView("message")},
    std::pair{VLChatMessageType::system, QLatin1StringView("system")},
};
template<>
inline constexpr auto words<VLSystemChatMessageAction> = std::array{
    std::pair{VLSystemChatMessageAction::usermod, QLatin1StringView("usermod")},
};

template<>
inline constexpr auto fields<VLChatMessageRecipient> = std::tuple{
    lenient("userId", &VLChatMessageRecipient::userId),
    lenient("isDeleted", &VLChatMessageRecipient::isDeleted),
    lenient("isUnread", &VLChatMessageRecipient::isUnread),
};
template<>
inline constexpr auto fields<VLChatMessageAttachment> = std::tuple{
    lenient("fileID", &VLChatMessageAttachment::fileId),
    lenient("fileName", &VLChatMessageAttachment::fileName),
    lenient("fileSize", &VLChatMessageAttachment::fileSize),
    lenient("downloadURL", &VLChatMessageAttachment::downloadUrl),
    lenient("imageTrancodedURL", &VLChatMessageAttachment::imageTrancodedURL),
    lenient("streamingURL", &VLChatMessageAttachment::streamingUrl),
    lenient("documentURL", &VLChatMessageAttachment::documentUrl),
};
/// Written, never read.
template<>
inline constexpr auto fields<VLSendAttachmentInfo> = std::tuple{
    required("fileID", &VLSendAttachmentInfo::fileID),
    required("fileName", &VLSendAttachmentInfo::fileName),
    required("fileSize", &VLSendAttachmentInfo::fileSize),
    required("fileURL", &VLSendAttachmentInfo::fileURL),
};
template<>
inline constexpr auto fields<VLChatUser> = std::tuple{
    lenient("name", &VLChatUser::name),
    lenient("lname", &VLChatUser::lname),
    lenient("userId", &VLChatUser::userId),
};
/// What stands at the top of a message, whatever its type; the rest is read by the specialisation below.
template<>
inline constexpr auto fields<VLChatMessage> = std::tuple{
    required("_id", &VLChatMessage::id),
    required("threadId", &VLChatMessage::threadId),
    lenient("conferaId", &VLChatMessage::conferaId),
    lenient("recipients", &VLChatMessage::reciepients),
    lenient("type", &VLChatMessage::messageType),
    lenient("creatorsName", &VLChatMessage::creatorsName),
    lenient("creatorsLName", &VLChatMessage::creatorsLName),
    lenient("cOn", &VLChatMessage::createdAtString),
};
template<>
inline constexpr auto fields<VLChatParticipant> = std::tuple{
    required("_id", &VLChatParticipant::id),
    lenient("name", &VLChatParticipant::name),
    lenient("lname", &VLChatParticipant::lname),
};
template<>
inline constexpr auto fields<VLChatThread> = std::tuple{
    required("_id", &VLChatThread::id),
    lenient("name", &VLChatThread::name),
    lenient("status", &VLChatThread::status),
    lenient("context", &VLChatThread::context),
    lenient("conferaId", &VLChatThread::conferaId),
    lenient("createdBy", &VLChatThread::createdBy),
    lenient("isRestrictedChat", &VLChatThread::isRestrictedChat),
    lenient("update", &VLChatThread::update),
    lenient("numberOfAttachments", &VLChatThread::numberOfAttachments),
    lenient("createdAt", &VLChatThread::createdAtString),
    lenient("modifiedAt", &VLChatThread::modifiedAt),
    lenient("members", &VLChatThread::members),
};
template<>
inline constexpr auto fields<VLThreadChatMessages> = std::tuple{
    lenient("messages", &VLThreadChatMessages::messages),
    lenient("moreAvailable", &VLThreadChatMessages::moreAvailable),
    lenient("totalCount", &VLThreadChatMessages::totalCount),
    lenient("unreadCount", &VLThreadChatMessages::unreadCount),
};

namespace json {

/// Which component of a message counts depends on its type. A "createdBy" that is neither text nor null ends the
/// process: deliberate, the backend must never send one.
template<> struct Reader<VLChatMessage> {
    static bool read(const JsonView &json, VLChatMessage &message, Failure *failure);
};

} // namespace json

} // namespace vynlex

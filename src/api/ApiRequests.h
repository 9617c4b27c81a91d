#pragma once

#include <QString>

#include <optional>
#include <vector>

#include "api/ChatRecords.h"
#include "api/DirectoryRecords.h"
#include "api/VLAPIRequest.h"

namespace vynlex {

/// What the kit asks of the backend, and the record that is the answer. The constructors say where to and how.
template<typename Answer> struct ApiRequest {
    using ReturnDataType = Answer;

    VLAPIPath path;
    VLHTTPMethod method = VLHTTPMethod::get;
    std::optional<VLQueryParameters> queryParameters = {};
    std::optional<VLRequestParameters> requestParameters = {};
    std::type_identity<Answer> response = {};
};

/// Exchanges the host's web token. The body's key is "jwt" although the web token is none: the backend's naming.
struct GetJWTokenRequest : ApiRequest<VLTokenResponse> {
    explicit GetJWTokenRequest(const QString &webToken);
};

/// The thread of two people, made when there is none. The second is its context and its only administrator.
struct GetPrivateChatThreadRequest : ApiRequest<VLChatThread> {
    GetPrivateChatThreadRequest(const QString &firstUserId, const QString &secondUserId);
};

/// The newest 150 messages of a thread; older ones are never asked for.
struct GetChatMessagesRequest : ApiRequest<VLThreadChatMessages> {
    explicit GetChatMessagesRequest(const QString &threadId);
};

/// Answered by the message as the backend has stored it.
struct SendChatMessageRequest : ApiRequest<VLChatMessage> {
    SendChatMessageRequest(const QString &threadId, const QString &text,
                           const std::vector<VLSendAttachmentInfo> &attachments = {});
};

/// The users of the service among the uploaded numbers. The query is the caller's ("offset", "limit", "search"); so is
/// the body, which a GET never sends.
struct GetContactsRequest : ApiRequest<VLContactsResponse> {
    explicit GetContactsRequest(std::optional<VLQueryParameters> query = {},
                                std::optional<VLRequestParameters> parameters = {});
};

struct GetRecentsContactsRequest : ApiRequest<VLRecentContactsResponse> {
    /// `callCategory`: words separated by commas ("one_to_one_call,group_call"). `limit`: 1 to 200.
    GetRecentsContactsRequest(const QString &callCategory, qint64 offset, qint64 limit);
};

/// Tells the backend the device's contacts: one entry a number, of which only the digits 0 to 9 are sent.
struct ContactsUploadRequest : ApiRequest<VLSuccessResponse> {
    explicit ContactsUploadRequest(const std::vector<User> &deviceContacts);
};

} // namespace vynlex

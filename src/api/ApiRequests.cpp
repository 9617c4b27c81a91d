#include "api/ApiRequests.h"

#include <utility>

#include "api/PhoneNumber.h"

using namespace Qt::StringLiterals;

namespace vynlex {
namespace {

struct UploadedContact {
    QString name;
    QString phoneNo;
};

struct OutgoingMessage {
    QString text;
    std::vector<VLSendAttachmentInfo> attachments;
};

} // namespace

template<>
inline constexpr auto fields<UploadedContact> = std::tuple{
    required("name", &UploadedContact::name),
    required("phoneNo", &UploadedContact::phoneNo),
};
template<>
inline constexpr auto fields<OutgoingMessage> = std::tuple{
    required("text", &OutgoingMessage::text),
    required("attachments", &OutgoingMessage::attachments),
};

namespace {

QJsonValue entriesOf(const std::vector<User> &deviceContacts)
{
    std::vector<UploadedContact> entries;
    entries.reserve(deviceContacts.size());
    for (const User &contact : deviceContacts)
        entries.push_back({contact.name, digitsOf(contact.phoneNumber)});
    return toJson(entries);
}

} // namespace

GetJWTokenRequest::GetJWTokenRequest(const QString &webToken)
    : ApiRequest{
          .path = VLAPIPath::getJWTToken(),
          .method = VLHTTPMethod::post,
          .requestParameters = VLRequestParameters{{u"jwt"_s, webToken}},
      }
{
}

GetPrivateChatThreadRequest::GetPrivateChatThreadRequest(const QString &firstUserId, const QString &secondUserId)
    : ApiRequest{
          .path = VLAPIPath::getPrivateChatThread(),
          .method = VLHTTPMethod::post,
          .requestParameters =
              VLRequestParameters{
                  {u"members"_s, QJsonArray{firstUserId, secondUserId}},
                  {u"context"_s, secondUserId},
                  {u"admins"_s, QJsonArray{secondUserId}},
              },
      }
{
}

GetChatMessagesRequest::GetChatMessagesRequest(const QString &threadId)
    : ApiRequest{
          .path = VLAPIPath::getChatThreadMessages(threadId),
          .queryParameters = VLQueryParameters{{u"limit"_s, 150}, {u"offset"_s, 0}},
      }
{
}

SendChatMessageRequest::SendChatMessageRequest(const QString &threadId, const QString &text,
                                               const std::vector<VLSendAttachmentInfo> &attachments)
    : ApiRequest{
          .path = VLAPIPath::sendChatMessage(threadId),
          .method = VLHTTPMethod::post,
          .requestParameters = VLRequestParameters{{u"messageComponent"_s, toJson(OutgoingMessage{text, attachments})}},
      }
{
}

GetContactsRequest::GetContactsRequest(std::optional<VLQueryParameters> query,
                                       std::optional<VLRequestParameters> parameters)
    : ApiRequest{
          .path = VLAPIPath::getContacts(),
          .queryParameters = std::move(query),
          .requestParameters = std::move(parameters),
      }
{
}

GetRecentsContactsRequest::GetRecentsContactsRequest(const QString &callCategory, qint64 offset, qint64 limit)
    : ApiRequest{
          .path = VLAPIPath::getRecentContacts(),
          .queryParameters =
              VLQueryParameters{{u"callCategory"_s, callCategory}, {u"offset"_s, offset}, {u"limit"_s, limit}},
      }
{
}

ContactsUploadRequest::ContactsUploadRequest(const std::vector<User> &deviceContacts)
    : ApiRequest{
          .path = VLAPIPath::uploadContacts(),
          .method = VLHTTPMethod::put,
          .requestParameters = VLRequestParameters{{u"contacts"_s, entriesOf(deviceContacts)}},
      }
{
}

} // namespace vynlex

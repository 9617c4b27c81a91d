#include "api/VLApiManager.h"

#include <utility>

#include "api/VLNetworkClient.h"

namespace vynlex {

VLApiManager::VLApiManager()
    : networkClient(std::make_unique<VLNetworkClient>())
{
    networkClient->serverEnvironment = currentEnv;
}

VLApiManager::~VLApiManager() = default;

VLApiManager &VLApiManager::shared()
{
    static auto *const instance = new VLApiManager;
    return *instance;
}

bool VLApiManager::setCredentials(const QString &guestId, const QString &jwt)
{
    const bool isAnotherUser = guestId != currentUserGuestID;
    if (isAnotherUser)
        m_user = std::make_shared<const char>();
    currentUserGuestID = guestId;
    currentJWT = jwt;
    if (networkClient)
        networkClient->jwtToken = jwt;
    return isAnotherUser;
}

template<VLAPIRequest Request>
void VLApiManager::send(const Request &record, VLApiCompletion<typename Request::ReturnDataType> completion)
{
    using Answer = VLApiResult<typename Request::ReturnDataType>;
    if (!networkClient)
        return;
    networkClient->send(record, [user = std::weak_ptr(m_user), completion = std::move(completion)](Answer answer) {
        if (user.expired()) // or the next one would be shown it
            answer = tl::unexpected(VLApiRequestError(VLApiRequestError::Case::unKnown));
        completion(std::move(answer));
    });
}

void VLApiManager::getJWToken(const QString &webToken, VLApiCompletion<VLTokenResponse> completion)
{
    if (networkClient) // Not for the present user: whose token it is, the answer tells.
        networkClient->send(GetJWTokenRequest(webToken), std::move(completion));
}

void VLApiManager::uploadContacts(const std::vector<User> &deviceContacts,
                                  VLApiCompletion<VLSuccessResponse> completion)
{
    send(ContactsUploadRequest(deviceContacts), std::move(completion));
}

void VLApiManager::getContacts(const VLQueryParameters &query, VLApiCompletion<VLContactsResponse> completion)
{
    send(GetContactsRequest(query), std::move(completion));
}

void VLApiManager::getRecentContacts(const QString &callCategory, qint64 offset, qint64 limit,
                                     VLApiCompletion<VLRecentContactsResponse> completion)
{
    send(GetRecentsContactsRequest(callCategory, offset, limit), std::move(completion));
}

void VLApiManager::getPrivateChatThread(const QString &firstUserId, const QString &secondUserId,
                                        VLApiCompletion<VLChatThread> completion)
{
    send(GetPrivateChatThreadRequest(firstUserId, secondUserId), std::move(completion));
}

void VLApiManager::getChatMessages(const QString &threadId, VLApiCompletion<VLThreadChatMessages> completion)
{
    send(GetChatMessagesRequest(threadId), std::move(completion));
}

void VLApiManager::sendChatMessage(const QString &threadId, const QString &text,
                                   const std::vector<VLSendAttachmentInfo> &attachments,
                                   VLApiCompletion<VLChatMessage> completion)
{
    send(SendChatMessageRequest(threadId, text, attachments), std::move(completion));
}

} // namespace vynlex

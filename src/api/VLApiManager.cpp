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

void VLApiManager::setCredentials(const QString &guestId, const QString &jwt)
{
    currentUserGuestID = guestId;
    currentJWT = jwt;
    if (networkClient)
        networkClient->jwtToken = jwt;
}

template<VLAPIRequest Request>
void VLApiManager::send(const Request &record, VLApiCompletion<typename Request::ReturnDataType> completion)
{
    if (networkClient)
        networkClient->send(record, std::move(completion));
}

void VLApiManager::getJWToken(const QString &webToken, VLApiCompletion<VLTokenResponse> completion)
{
    send(GetJWTokenRequest(webToken), std::move(completion));
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

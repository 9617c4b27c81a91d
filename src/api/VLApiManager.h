#pragma once

#include <VynlexTranslationSDK/VLApiServer.h>
#include <VynlexTranslationSDK/VLTranslationConfig.h>

#include <QString>

#include <memory>
#include <optional>
#include <vector>

#include "api/ApiRequests.h"
#include "api/VLApiRequestError.h"

namespace vynlex {

class VLNetworkClient;

/// What the kit keeps of the signed-in user for the life of the process, and the backend's operations in that user's
/// name.
///
/// Main thread. A completion runs on the main queue, never before the call returns, at most once. What one user has
/// asked for fails, whatever the backend answers, once another one has signed in; the token exchange alone does not.
class VLApiManager {
public:
    VLApiManager();
    ~VLApiManager();
    VLApiManager(const VLApiManager &) = delete;
    VLApiManager &operator=(const VLApiManager &) = delete;

    static VLApiManager &shared();

    /// From now on requests carry `jwt`. The guest id is not sent; another one than before is another user, which is
    /// what this returns.
    bool setCredentials(const QString &guestId, const QString &jwt);

    // Without a network client there is nobody to ask, and these do nothing.
    void getJWToken(const QString &webToken, VLApiCompletion<VLTokenResponse> completion);
    /// One entry per element; `name` and the digits of `phoneNumber` are sent.
    void uploadContacts(const std::vector<User> &deviceContacts, VLApiCompletion<VLSuccessResponse> completion);
    /// `query`: "offset", "limit" (1 to 1000) and "search", none of them required.
    void getContacts(const VLQueryParameters &query, VLApiCompletion<VLContactsResponse> completion);
    /// `callCategory`: "one_to_one_call", "group_call" and "missed_call", separated by commas. `limit`: 1 to 200.
    void getRecentContacts(const QString &callCategory, qint64 offset, qint64 limit,
                           VLApiCompletion<VLRecentContactsResponse> completion);
    void getPrivateChatThread(const QString &firstUserId, const QString &secondUserId,
                              VLApiCompletion<VLChatThread> completion);
    /// The newest 150.
    void getChatMessages(const QString &threadId, VLApiCompletion<VLThreadChatMessages> completion);
    void sendChatMessage(const QString &threadId, const QString &text,
                         const std::vector<VLSendAttachmentInfo> &attachments,
                         VLApiCompletion<VLChatMessage> completion);

    std::unique_ptr<VLNetworkClient> networkClient;
    QString currentUserGuestID;
    QString currentJWT;
    /// The client starts with the same; a later change reaches it only when its `serverEnvironment` is set as well.
    VLApiServer currentEnv = VLApiServer::demo;
    std::vector<VLChatMessage> allChatMessages;
    /// The host's keys; absent until the host sets the kit up, and the last record wins. The services copy what they
    /// need when they are made or asked, so a later record does not reach a recogniser that exists already.
    std::optional<VLTranslationConfig> translatedConfig;

private:
    template<VLAPIRequest Request>
    void send(const Request &record, VLApiCompletion<typename Request::ReturnDataType> completion);

    std::shared_ptr<const char> m_user = std::make_shared<const char>(); ///< Another one for each user.
};

} // namespace vynlex

#pragma once

#include <VynlexTranslationSDK/NetworkReachabilityHandlerDelegate.h>
#include <VynlexTranslationSDK/VLApiServer.h>
#include <VynlexTranslationSDK/VLCurrentUserType.h>

#include <QString>
#include <QUuid>

#include <functional>
#include <utility>

#include "api/VLApiRequestManager.h"
#include "platform/dispatch/Lifetime.h"

namespace vynlex {

class NetworkReachabilityHandler;

/// Asks the backend in somebody's name, and hears whether the network is there.
///
/// Main thread. What it holds is read when a request is made, not when it is answered.
class VLNetworkClient final : public NetworkReachabilityHandlerDelegate {
public:
    /// `reachability` outlives the client.
    explicit VLNetworkClient(NetworkReachabilityHandler &reachability);
    /// Hears of the network from the shared handler.
    VLNetworkClient();
    ~VLNetworkClient() override;
    VLNetworkClient(const VLNetworkClient &) = delete;
    VLNetworkClient &operator=(const VLNetworkClient &) = delete;

    /// The operation of every request record. Destroying the client drops what is under way: `completion` is then not
    /// called.
    template<VLAPIRequest Request>
    void send(const Request &record, VLApiCompletion<typename Request::ReturnDataType> completion)
    {
        requestManager.send(record, {serverEnvironment, jwtToken, deviceId, currentUserType},
                            m_lifetime.guard(std::move(completion)));
    }

    void didNetworkStateChanged(bool isConnected) override;

    /// The client's name with the reachability handler.
    const QUuid identifier = QUuid::createUuid();
    VLApiServer serverEnvironment = VLApiServer::production;
    QString jwtToken; ///< Empty: requests carry no authorization.
    QString deviceId; ///< Sent also when empty.
    VLApiRequestManager requestManager;
    VLCurrentUserType currentUserType = VLCurrentUserType::guest;
    std::function<void(bool isConnected)> onNetworkStateChanged;

private:
    NetworkReachabilityHandler &m_reachability;
    Lifetime m_lifetime;
};

} // namespace vynlex

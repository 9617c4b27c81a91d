#include "api/VLNetworkClient.h"

#include <VynlexTranslationSDK/NetworkReachabilityHandler.h>

namespace vynlex {

VLNetworkClient::VLNetworkClient(NetworkReachabilityHandler &reachability)
    : m_reachability(reachability)
{
    m_reachability.addDelegates(*this, identifier);
    m_reachability.startNotifier();
}

VLNetworkClient::VLNetworkClient()
    : VLNetworkClient(NetworkReachabilityHandler::instance())
{
}

VLNetworkClient::~VLNetworkClient()
{
    m_reachability.removeDelegate(identifier);
}

void VLNetworkClient::didNetworkStateChanged(bool isConnected)
{
    if (const auto callback = onNetworkStateChanged) // A copy: it may destroy the client, or replace itself.
        callback(isConnected);
}

} // namespace vynlex

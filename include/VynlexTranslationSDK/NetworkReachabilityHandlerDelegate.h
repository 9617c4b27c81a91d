#pragma once

#include <VynlexTranslationSDK/VynlexExport.h>

namespace vynlex {

/// Is told whether the device is connected. See `NetworkReachabilityHandler`.
class VYNLEX_EXPORT NetworkReachabilityHandlerDelegate {
public:
    virtual ~NetworkReachabilityHandlerDelegate() = default;

    /// Main thread. May add and remove delegates, itself included.
    virtual void didNetworkStateChanged(bool isConnected) = 0;
};

} // namespace vynlex

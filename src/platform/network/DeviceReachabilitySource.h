#pragma once

#include <memory>
#include <optional>

#include "platform/dispatch/Guarded.h"
#include "platform/network/NetlinkReachabilitySource.h"
#include "platform/network/NetworkManagerReachabilitySource.h"
#include "platform/network/ReachabilitySource.h"

namespace vynlex {

/// What holds when the kernel and NetworkManager say this; absent: it does not tell.
///
/// The kernel says whether a packet leaves the device, because that also holds for links that NetworkManager does not
/// manage and while the daemon is gone; NetworkManager, where it has a connection, says over what.
std::optional<ReachabilityFlags> combinedFlags(std::optional<ReachabilityFlags> kernel,
                                               std::optional<ReachabilityFlags> networkManager);

/// The shipped source: the kernel from the first moment on, and NetworkManager as soon as it has answered.
class DeviceReachabilitySource final : public ReachabilitySource {
public:
    DeviceReachabilitySource();
    ~DeviceReachabilitySource() override;

    tl::expected<void, StartFailure> start(Changed changed) override;
    void stop() override;
    [[nodiscard]] tl::expected<ReachabilityFlags, QString> currentFlags() override;

private:
    struct Teller;

    NetlinkReachabilitySource m_kernel;
    NetworkManagerReachabilitySource m_networkManager;
    Guarded<std::shared_ptr<Teller>> m_teller;
};

} // namespace vynlex

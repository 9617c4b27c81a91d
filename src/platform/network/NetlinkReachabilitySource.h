#pragma once

#include <memory>

#include "platform/dispatch/Guarded.h"
#include "platform/network/ReachabilitySource.h"

namespace vynlex {

/// Reachability from the Linux kernel alone: its links, addresses and default routes (`flagsOf`). Reads them again
/// whenever the kernel tells of a change to any of them, on a thread that sleeps until then.
class NetlinkReachabilitySource final : public ReachabilitySource {
public:
    NetlinkReachabilitySource();
    ~NetlinkReachabilitySource() override;

    tl::expected<void, StartFailure> start(Changed changed) override;
    void stop() override;
    [[nodiscard]] tl::expected<ReachabilityFlags, QString> currentFlags() override;

private:
    struct Watch;
    Guarded<std::shared_ptr<Watch>> m_watch;
};

} // namespace vynlex

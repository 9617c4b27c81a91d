#pragma once

#include <QByteArray>
#include <QString>

#include <cstdint>
#include <tl/expected.hpp>
#include <vector>

#include "platform/network/ReachabilitySource.h"

namespace vynlex {

/// What the kernel knows of the device's network, as far as it matters for the way out.
struct KernelNetwork {
    struct Link {
        int index = 0;
        QByteArray name;
        QByteArray kind; ///< The driver's word for a virtual link ("rmnet", "wwan", "tun"); mostly empty.
        bool loopback = false;
        bool running = false; ///< Switched on, and its medium is there.
    };
    /// An address that can be used beyond its link: not loopback, not link-local, not a duplicate.
    struct Address {
        int linkIndex = 0;
        int family = 0; ///< AF_INET or AF_INET6
    };
    /// One with several next hops appears once for each.
    struct DefaultRoute {
        int linkIndex = 0; ///< 0: it refuses what would go over it.
        int family = 0;
        bool mainTable = true;
        std::uint32_t metric = 0; ///< The lower, the better.
    };

    std::vector<Link> links;
    std::vector<Address> addresses;
    std::vector<DefaultRoute> defaultRoutes;

    /// Asks the kernel; less than a millisecond on a device with a handful of links.
    static tl::expected<KernelNetwork, QString> read();
};

/// Whether a link is one of the cellular network: by its kind, or by the names that kernels and udev give to modems
/// ("wwan0", "wwp0s20u4", "rmnet_data0", "ccmni1"). Dial-up links ("ppp0") do not count, because nothing tells a
/// modem's from those of DSL and tunnels, and a wired line that passes for cellular is the worse mistake.
bool isCellular(const KernelNetwork::Link &link);

/// Reachable when the best default route of a family that can be used (it leads over a running link with an address of
/// that family, or refuses) does not refuse; a private network without a way out is not reachable. Cellular when every
/// such route is.
ReachabilityFlags flagsOf(const KernelNetwork &network);

} // namespace vynlex

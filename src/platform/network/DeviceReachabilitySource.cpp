#include "platform/network/DeviceReachabilitySource.h"

#include <atomic>
#include <utility>

#include "platform/dispatch/SerialQueue.h"

namespace vynlex {
namespace {

template<typename Value> std::optional<ReachabilityFlags> known(const Value &flags)
{
    return flags ? std::optional(*flags) : std::nullopt;
}

std::optional<ReachabilityFlags> readBoth()
{
    return combinedFlags(known(NetlinkReachabilitySource().currentFlags()),
                         known(NetworkManagerReachabilitySource().currentFlags()));
}

} // namespace

std::optional<ReachabilityFlags> combinedFlags(std::optional<ReachabilityFlags> kernel,
                                               std::optional<ReachabilityFlags> networkManager)
{
    if (!kernel || !networkManager)
        return kernel ? kernel : networkManager;
    const bool bothReach = (*kernel & *networkManager & reachabilityFlag::reachable) != 0;
    return bothReach ? networkManager : kernel;
}

/// Brings what two threads tell into one order. Owned by the source and by what is under way.
struct DeviceReachabilitySource::Teller : std::enable_shared_from_this<Teller> {
    Changed changed;
    std::atomic<bool> stopped = false;
    SerialQueue queue{QStringLiteral("deviceReachability")};

    /// Reads both anew instead of believing the one that calls: the other may have changed since.
    [[nodiscard]] Changed input()
    {
        return [weak = weak_from_this()](ReachabilityFlags) {
            if (const auto self = weak.lock())
                self->queue.async([self] {
                    const auto flags = readBoth();
                    if (flags && !self->stopped)
                        self->changed(*flags);
                });
        };
    }
};

DeviceReachabilitySource::DeviceReachabilitySource() = default;

DeviceReachabilitySource::~DeviceReachabilitySource()
{
    DeviceReachabilitySource::stop();
}

tl::expected<void, ReachabilitySource::StartFailure> DeviceReachabilitySource::start(Changed changed)
{
    auto teller = std::make_shared<Teller>();
    teller->changed = std::move(changed);
    // Without the kernel's word NetworkManager's alone will do, and the other way round.
    const auto kernelStarted = m_kernel.start(teller->input());
    if (!kernelStarted && kernelStarted.error() == StartFailure::Queue)
        return kernelStarted;
    (void)m_networkManager.start(teller->input());
    m_teller.set(std::move(teller));
    return {};
}

void DeviceReachabilitySource::stop()
{
    m_kernel.stop();
    m_networkManager.stop();
    if (const auto teller = m_teller.exchange(nullptr))
        teller->stopped = true;
}

tl::expected<ReachabilityFlags, QString> DeviceReachabilitySource::currentFlags()
{
    if (const auto flags = readBoth())
        return *flags;
    return tl::unexpected(QStringLiteral("Neither the kernel nor NetworkManager tells of the network."));
}

} // namespace vynlex

#pragma once

#include <QString>

#include <cstdint>
#include <functional>
#include <tl/expected.hpp>

namespace vynlex {

/// What a device knows of its way to the network: a set of `reachabilityFlag`s, 32 bits. Other bits may be set and mean
/// nothing to the kit.
using ReachabilityFlags = std::uint32_t;

/// The numbers are those of the SystemConfiguration framework, so that an adapter over it passes them on as they are.
namespace reachabilityFlag {
inline constexpr ReachabilityFlags reachable = 1U << 1; ///< A packet to any address would leave the device.
inline constexpr ReachabilityFlags wwan = 1U << 18;     ///< It would leave over the cellular network alone.
} // namespace reachabilityFlag

/// Port: whether the device can reach the network, and whether only over the cellular one.
///
/// All functions may be called on any thread. `start` and `currentFlags` may take some milliseconds (they open sockets)
/// but never wait for a daemon; `stop` waits for nothing. Making one opens nothing.
class ReachabilitySource {
public:
    using Changed = std::function<void(ReachabilityFlags)>;

    enum class StartFailure {
        Callback, ///< The device does not tell of changes.
        Queue,    ///< There is no thread to be told on.
    };

    virtual ~ReachabilitySource() = default; ///< Stops.

    /// From now on `changed` runs whenever the flags may have changed, with those that hold then; it may be called with
    /// the same flags again, and is not called for the flags that hold at the start. It runs on another
    /// thread, one call at a time, possibly before `start` has returned. At most once until the next `stop`.
    virtual tl::expected<void, StartFailure> start(Changed changed) = 0;

    /// No call of `changed` begins after this has returned. One that is under way on another thread may still finish,
    /// so `changed` owns what it uses; it may itself call `stop` or destroy the source. Nothing to stop is fine.
    virtual void stop() = 0;

    /// The flags that hold now; started or not. Fails with a sentence when the device does not tell.
    [[nodiscard]] virtual tl::expected<ReachabilityFlags, QString> currentFlags() = 0;
};

} // namespace vynlex

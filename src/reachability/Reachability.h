#pragma once

#include <QString>

#include <functional>
#include <memory>
#include <optional>
#include <tl/expected.hpp>

#include "platform/dispatch/Guarded.h"
#include "platform/dispatch/MainQueue.h"
#include "platform/dispatch/SerialQueue.h"
#include "platform/network/ReachabilitySource.h"
#include "reachability/NotificationCenter.h"

namespace vynlex {

enum class ReachabilityError {
    failedToCreateWithAddress,
    failedToCreateWithHostname, ///< Kept for callers; nothing here watches one host.
    unableToSetCallback,
    unableToSetDispatchQueue,
    unableToGetFlags,
};

/// "unavailable flags" when they were never read.
[[nodiscard]] QString description(const std::optional<ReachabilityFlags> &flags);

/// Turns what the device knows of the network into a connection kind, and tells of changes: by a callback, and by the
/// notification "reachabilityChanged" with itself as the object.
///
/// Watches whether any address can be reached. The device calls back on `reachabilitySerialQueue`; callbacks and
/// notification run on `notificationQueue`. Operations may be called on any thread; the public fields are set before
/// the notifier starts, or on the notification queue. Held by `shared_ptr`; the device holds it weakly.
class Reachability : public NotificationObject, public std::enable_shared_from_this<Reachability> {
public:
    enum class Connection { unavailable, cellular, wifi };

    static QString changedNotificationName(); ///< "reachabilityChanged"

    /// Fails with `failedToCreateWithAddress` when there is no source.
    static tl::expected<std::shared_ptr<Reachability>, ReachabilityError>
    create(std::unique_ptr<ReachabilitySource> source,
           NotificationCenter &notificationCenter = NotificationCenter::defaultCenter());
    ~Reachability() override; ///< Stops the notifier.
    Reachability(const Reachability &) = delete;
    Reachability &operator=(const Reachability &) = delete;

    std::function<void(Reachability &)> whenReachable;
    std::function<void(Reachability &)> whenUnreachable;
    bool reachableOnWWAN = true;          ///< Kept beside the next one; nothing reads it.
    bool allowsCellularConnection = true; ///< When false, a connection by the cellular network alone is none.
    bool isRunningOnDevice = true;        ///< Nothing that this kit runs on is a simulator.
    /// Where callbacks and the notification are delivered; the serial queue itself if this is empty.
    std::function<void(Task)> notificationQueue = MainQueue::async;

    [[nodiscard]] bool notifierRunning() const { return m_notifierRunning.copy(); }
    /// Those read last; absent until the first time.
    [[nodiscard]] std::optional<ReachabilityFlags> flags() const { return m_flags.copy(); }
    [[nodiscard]] Connection connection() const;

    /// Does nothing when it runs. The flags are read once in the background, and count as a change when they are others
    /// than before. Fails with `unableToSetCallback` or `unableToSetDispatchQueue`; nothing runs then.
    tl::expected<void, ReachabilityError> startNotifier();
    void stopNotifier();

    /// Reads the flags on the serial queue and waits for it; tells nobody. `unableToGetFlags` leaves them as they are.
    /// Not for the serial queue itself.
    tl::expected<void, ReachabilityError> readFlags();

private:
    Reachability(std::unique_ptr<ReachabilitySource> source, NotificationCenter &notificationCenter);

    void flagsRead(ReachabilityFlags flags);
    void notify();

    NotificationCenter &m_notificationCenter;
    const std::unique_ptr<ReachabilitySource> m_reachabilityRef;
    Guarded<bool> m_notifierRunning{false};
    Guarded<std::optional<ReachabilityFlags>> m_flags;
    SerialQueue m_reachabilitySerialQueue;
};

} // namespace vynlex

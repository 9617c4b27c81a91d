#pragma once

#include <QNetworkInformation>

#include <memory>

#include "platform/network/ReachabilitySource.h"

namespace vynlex {

/// Reachable where the device has a route out, whether or not the internet answers behind it (a captive portal counts).
ReachabilityFlags flagsOf(QNetworkInformation::Reachability reachability,
                          QNetworkInformation::TransportMedium transportMedium);

/// Reachability from NetworkManager, by `QNetworkInformation`, which tells cellular connections from others.
///
/// The backend is loaded on a thread of its own, once per process, on the first turn of the main event loop after the
/// first `start`; `currentFlags` fails until it is there, and for ever where NetworkManager does not run then or does
/// not answer. That it is there counts as a change. `changed` runs on the thread on which the backend lives: that
/// thread, or the one of a host that has loaded the same backend before.
class NetworkManagerReachabilitySource final : public ReachabilitySource {
public:
    NetworkManagerReachabilitySource() = default;
    ~NetworkManagerReachabilitySource() override;
    NetworkManagerReachabilitySource(const NetworkManagerReachabilitySource &) = delete;
    NetworkManagerReachabilitySource &operator=(const NetworkManagerReachabilitySource &) = delete;

    tl::expected<void, StartFailure> start(Changed changed) override;
    void stop() override;
    [[nodiscard]] tl::expected<ReachabilityFlags, QString> currentFlags() override;
};

} // namespace vynlex

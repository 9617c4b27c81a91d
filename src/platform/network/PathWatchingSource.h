#pragma once

#include <memory>

#include "platform/network/ReachabilitySource.h"

namespace vynlex {

/// Another source, which besides tells that the way to the network has become one of another kind: Wi-Fi instead of
/// cellular or the other way round, also with a time in between in which there was none. A network that goes and comes
/// back as the same kind is not another way: connections may well have lived through it.
class PathWatchingSource final : public ReachabilitySource {
public:
    /// `pathChanged` runs where the other source tells of changes, before `changed`, and no longer than that.
    PathWatchingSource(std::unique_ptr<ReachabilitySource> source, std::function<void()> pathChanged);

    tl::expected<void, StartFailure> start(Changed changed) override;
    void stop() override;
    [[nodiscard]] tl::expected<ReachabilityFlags, QString> currentFlags() override;

private:
    std::unique_ptr<ReachabilitySource> m_source;
    std::function<void()> m_pathChanged;
};

} // namespace vynlex

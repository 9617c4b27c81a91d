#include "platform/network/PathWatchingSource.h"

#include <optional>
#include <utility>

namespace vynlex {
namespace {

/// Nothing while there is no way.
std::optional<bool> isCellular(ReachabilityFlags flags)
{
    if ((flags & reachabilityFlag::reachable) == 0)
        return std::nullopt;
    return (flags & reachabilityFlag::wwan) != 0;
}

} // namespace

PathWatchingSource::PathWatchingSource(std::unique_ptr<ReachabilitySource> source, std::function<void()> pathChanged)
    : m_source(std::move(source))
    , m_pathChanged(std::move(pathChanged))
{
}

tl::expected<void, ReachabilitySource::StartFailure> PathWatchingSource::start(Changed changed)
{
    const auto flagsNow = m_source->currentFlags();
    const auto before = std::make_shared<std::optional<bool>>(flagsNow ? isCellular(*flagsNow) : std::nullopt);
    return m_source->start([before, pathChanged = m_pathChanged, changed = std::move(changed)](auto flags) {
        if (const auto now = isCellular(flags)) {
            const auto last = std::exchange(*before, now);
            if (last && last != now)
                pathChanged();
        }
        changed(flags);
    });
}

void PathWatchingSource::stop()
{
    m_source->stop();
}

tl::expected<ReachabilityFlags, QString> PathWatchingSource::currentFlags()
{
    return m_source->currentFlags();
}

} // namespace vynlex

#include "reachability/Reachability.h"

#include <QStringList>

#include <future>
#include <utility>

namespace vynlex {

QString description(const std::optional<ReachabilityFlags> &flags)
{
    if (!flags)
        return QStringLiteral("unavailable flags");
    if (!(*flags & reachabilityFlag::reachable))
        return QStringLiteral("not reachable");
    return *flags & reachabilityFlag::wwan ? QStringLiteral("reachable by WWAN") : QStringLiteral("reachable");
}

QString Reachability::changedNotificationName()
{
    return QStringLiteral("reachabilityChanged");
}

tl::expected<std::shared_ptr<Reachability>, ReachabilityError>
Reachability::create(std::unique_ptr<ReachabilitySource> source, NotificationCenter &notificationCenter)
{
    if (!source)
        return tl::unexpected(ReachabilityError::failedToCreateWithAddress);
    return std::shared_ptr<Reachability>(new Reachability(std::move(source), notificationCenter));
}

Reachability::Reachability(std::unique_ptr<ReachabilitySource> source, NotificationCenter &notificationCenter)
    : m_notificationCenter(notificationCenter)
    , m_reachabilityRef(std::move(source))
    , m_reachabilitySerialQueue(QStringLiteral("reachability"))
{
}

Reachability::~Reachability()
{
    stopNotifier();
}

Reachability::Connection Reachability::connection() const
{
    const ReachabilityFlags known = flags().value_or(0);
    if (!(known & reachabilityFlag::reachable))
        return Connection::unavailable;
    if (known & reachabilityFlag::wwan)
        return allowsCellularConnection ? Connection::cellular : Connection::unavailable;
    return Connection::wifi;
}

tl::expected<void, ReachabilityError> Reachability::startNotifier()
{
    return m_notifierRunning.with([this](bool &running) -> tl::expected<void, ReachabilityError> {
        if (running)
            return {};
        const auto onQueue = [weak = weak_from_this()](auto task) {
            if (const auto self = weak.lock())
                self->m_reachabilitySerialQueue.async([weak, task] {
                    if (const auto alive = weak.lock())
                        task(*alive);
                });
        };
        const auto started = m_reachabilityRef->start(
            [onQueue](ReachabilityFlags flags) { onQueue([flags](Reachability &self) { self.flagsRead(flags); }); });
        if (!started) {
            m_reachabilityRef->stop();
            return tl::unexpected(started.error() == ReachabilitySource::StartFailure::Callback
                                      ? ReachabilityError::unableToSetCallback
                                      : ReachabilityError::unableToSetDispatchQueue);
        }
        onQueue([](Reachability &self) {
            if (const auto flags = self.m_reachabilityRef->currentFlags())
                self.flagsRead(*flags);
        });
        running = true;
        return {};
    });
}

void Reachability::stopNotifier()
{
    m_notifierRunning.with([this](bool &running) {
        if (std::exchange(running, false))
            m_reachabilityRef->stop();
    });
}

tl::expected<void, ReachabilityError> Reachability::readFlags()
{
    const auto result = std::make_shared<std::promise<bool>>();
    m_reachabilitySerialQueue.async([self = shared_from_this(), result] {
        const auto flags = self->m_reachabilityRef->currentFlags();
        if (flags)
            self->m_flags.set(*flags);
        result->set_value(flags.has_value());
    });
    if (!result->get_future().get())
        return tl::unexpected(ReachabilityError::unableToGetFlags);
    return {};
}

void Reachability::flagsRead(ReachabilityFlags flags)
{
    if (!notifierRunning() || m_flags.exchange(flags) == flags)
        return;
    const auto deliver = [weak = weak_from_this()] {
        if (const auto self = weak.lock())
            self->notify();
    };
    if (notificationQueue)
        notificationQueue(deliver);
    else
        deliver();
}

void Reachability::notify()
{
    // Copied: what is called may replace itself.
    if (const auto callback = connection() == Connection::unavailable ? whenUnreachable : whenReachable)
        callback(*this);
    m_notificationCenter.post({changedNotificationName(), shared_from_this()});
}

} // namespace vynlex

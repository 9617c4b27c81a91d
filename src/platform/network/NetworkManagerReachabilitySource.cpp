#include "platform/network/NetworkManagerReachabilitySource.h"

#include <QCoreApplication>
#include <QThread>

#include <chrono>
#include <map>
#include <optional>
#include <utility>
#include <vector>

#include "platform/dispatch/Guarded.h"
#include "platform/dispatch/MainQueue.h"
#include "platform/network/NetworkManagerProbe.h"

namespace vynlex {
namespace {

using Reachability = QNetworkInformation::Reachability;
using TransportMedium = QNetworkInformation::TransportMedium;

/// `QNetworkInformation` is one per process, and so is this: it loads the backend and passes on what it says.
class Backend {
public:
    static Backend &instance()
    {
        static auto *const backend = new Backend; // never destroyed: loading may outlast the application
        return *backend;
    }

    void loadSoon()
    {
        if (!m_asked.exchange(true))
            MainQueue::async([this] { begin(); });
    }

    [[nodiscard]] std::optional<ReachabilityFlags> flags() const { return m_flags.copy(); }

    void addListener(const void *owner, ReachabilitySource::Changed changed)
    {
        auto shared = std::make_shared<const ReachabilitySource::Changed>(std::move(changed));
        m_listeners.with([&](Listeners &listeners) { std::swap(listeners[owner], shared); });
    }

    void removeListener(const void *owner)
    {
        const auto dropped = m_listeners.with([&](Listeners &listeners) { return listeners.extract(owner); });
    }

private:
    using Listeners = std::map<const void *, std::shared_ptr<const ReachabilitySource::Changed>>;

    void begin()
    {
        m_thread = new QThread; // never destroyed: it may still wait for a broken bus at the end
        m_here = new QObject;
        m_thread->setObjectName(QStringLiteral("networkManager"));
        m_here->moveToThread(m_thread);
        // Before Qt's own, so that it runs after it: the backend is destroyed on this thread, and then the thread ends.
        qAddPostRoutine([] { instance().end(); });
        QObject::connect(m_thread, &QThread::started, m_here, [this] { load(); });
        QObject::connect(m_here, &QObject::destroyed, m_thread, &QThread::quit, Qt::DirectConnection);
        m_thread->start(QThread::LowPriority);
    }

    void end()
    {
        m_flags.set(std::nullopt);
        if (!m_thread->isFinished())
            m_here->deleteLater();
        m_thread->wait(QDeadlineTimer(std::chrono::milliseconds(100)));
    }

    void load()
    {
        // A host may have loaded another backend before, which then stays.
        if (!networkManagerAnswers() || !QNetworkInformation::loadBackendByName(u"networkmanager")) {
            m_thread->quit();
            return;
        }
        QNetworkInformation *const information = QNetworkInformation::instance();
        // On the thread where the backend lives, which may be another if a host has loaded it.
        QMetaObject::invokeMethod(information, [this, information] {
            const auto update = [this, information] {
                tell(vynlex::flagsOf(information->reachability(), information->transportMedium()));
            };
            QObject::connect(information, &QNetworkInformation::reachabilityChanged, information, update);
            QObject::connect(information, &QNetworkInformation::transportMediumChanged, information, update);
            update();
        });
    }

    void tell(ReachabilityFlags flags)
    {
        m_flags.set(flags);
        for (const auto &[owner, ignored] : m_listeners.copy()) {
            // Looked up again: the one before may have stopped it.
            const auto changed = m_listeners.with([owner = owner](Listeners &listeners) {
                const auto found = listeners.find(owner);
                return found == listeners.end() ? nullptr : found->second;
            });
            if (changed)
                (*changed)(flags);
        }
    }

    QThread *m_thread = nullptr;
    QObject *m_here = nullptr;
    Guarded<std::optional<ReachabilityFlags>> m_flags;
    Guarded<Listeners> m_listeners;
    Guarded<bool> m_asked{false};
};

} // namespace

ReachabilityFlags flagsOf(Reachability reachability, TransportMedium transportMedium)
{
    if (reachability != Reachability::Site && reachability != Reachability::Online)
        return 0;
    return transportMedium == TransportMedium::Cellular ? reachabilityFlag::reachable | reachabilityFlag::wwan
                                                        : reachabilityFlag::reachable;
}

NetworkManagerReachabilitySource::~NetworkManagerReachabilitySource()
{
    NetworkManagerReachabilitySource::stop();
}

tl::expected<void, ReachabilitySource::StartFailure> NetworkManagerReachabilitySource::start(Changed changed)
{
    Backend::instance().addListener(this, std::move(changed));
    Backend::instance().loadSoon();
    return {};
}

void NetworkManagerReachabilitySource::stop()
{
    Backend::instance().removeListener(this);
}

tl::expected<ReachabilityFlags, QString> NetworkManagerReachabilitySource::currentFlags()
{
    if (const auto flags = Backend::instance().flags())
        return *flags;
    return tl::unexpected(QStringLiteral("NetworkManager does not tell."));
}

} // namespace vynlex

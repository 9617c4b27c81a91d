#include <VynlexTranslationSDK/NetworkReachabilityHandler.h>
#include <VynlexTranslationSDK/NetworkReachabilityHandlerDelegate.h>

#include <map>

#include "platform/device/Platform.h"
#include "platform/dispatch/FatalError.h"
#include "platform/dispatch/GlobalQueue.h"
#include "reachability/Reachability.h"
#include "reachability/ReachabilityNote.h"

namespace vynlex {

std::shared_ptr<Reachability> reachabilityOf(const Notification &note)
{
    auto reachability = std::dynamic_pointer_cast<Reachability>(note.object);
    if (!reachability)
        fatalError(QStringLiteral("The object of \"%1\" must be a Reachability.").arg(note.name));
    return reachability;
}

struct Q_DECL_HIDDEN NetworkReachabilityHandler::Core : std::enable_shared_from_this<Core> {
    std::shared_ptr<Reachability> reachability;
    std::map<QUuid, NetworkReachabilityHandlerDelegate *> delegates;
    NotificationCenter::Registration registration;

    void setUp()
    {
        const auto platform = Platform::current();
        auto made =
            Reachability::create(platform->makeReachabilitySource ? platform->makeReachabilitySource() : nullptr);
        if (!made)
            return; // Deliberate: a device that cannot tell is no error.
        reachability = *std::move(made);
        registration =
            NotificationCenter::defaultCenter().addObserver(Reachability::changedNotificationName(), reachability.get(),
                                                            [weak = weak_from_this()](const Notification &note) {
                                                                if (const auto core = weak.lock())
                                                                    core->reachabilityChangedWithNote(note);
                                                            });
    }

    void reachabilityChangedWithNote(const Notification &note)
    {
        const auto changed = reachabilityOf(note);
        if (!changed->flags())
            (void)changed->readFlags(); // Without them the network counts as unavailable.
        const bool isConnected = changed->connection() != Reachability::Connection::unavailable;
        // Whoever is called may add and remove delegates, or destroy the handler: each is looked up again.
        const auto before = delegates;
        for (const auto &[identifier, delegate] : before) {
            const auto now = delegates.find(identifier);
            if (now != delegates.end() && now->second == delegate)
                delegate->didNetworkStateChanged(isConnected);
        }
    }
};

NetworkReachabilityHandler::NetworkReachabilityHandler()
    : m_core(std::make_shared<Core>())
{
}

NetworkReachabilityHandler::~NetworkReachabilityHandler()
{
    m_core->delegates.clear();
}

NetworkReachabilityHandler &NetworkReachabilityHandler::instance()
{
    static auto *const handler = [] {
        auto *const made = new NetworkReachabilityHandler;
        made->startNotifier();
        return made;
    }();
    return *handler;
}

void NetworkReachabilityHandler::addDelegates(NetworkReachabilityHandlerDelegate &delegate, const QUuid &identifier)
{
    m_core->delegates.insert_or_assign(identifier, &delegate);
}

void NetworkReachabilityHandler::removeDelegate(const QUuid &identifier)
{
    m_core->delegates.erase(identifier);
}

void NetworkReachabilityHandler::startNotifier()
{
    if (!m_core->reachability)
        m_core->setUp();
    // Not on the main thread, because the device opens sockets. A failure is swallowed; the next call tries again.
    if (const auto reachability = m_core->reachability; reachability && !reachability->notifierRunning())
        GlobalQueue::async([reachability] { (void)reachability->startNotifier(); });
}

} // namespace vynlex

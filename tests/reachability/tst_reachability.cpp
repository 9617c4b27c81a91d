#include <VynlexTranslationSDK/NetworkReachabilityHandler.h>
#include <VynlexTranslationSDK/NetworkReachabilityHandlerDelegate.h>

#include <QTest>

#include <array>
#include <functional>

#include "reachability/Reachability.h"
#include "reachability/ReachabilityNote.h"
#include "tests/fakes/CapturedConsole.h"
#include "tests/fakes/Patience.h"
#include "tests/fakes/TestPlatform.h"

using namespace vynlex;

namespace {

constexpr ReachabilityFlags none = 0;
constexpr ReachabilityFlags wifi = reachabilityFlag::reachable;
constexpr ReachabilityFlags cellular = reachabilityFlag::reachable | reachabilityFlag::wwan;

class Delegate final : public NetworkReachabilityHandlerDelegate {
public:
    void didNetworkStateChanged(bool isConnected) override
    {
        onMainThread = onMainThread && MainQueue::isCurrent();
        heard.push_back(isConnected);
        if (then)
            then();
    }

    const QUuid identifier = QUuid::createUuid();
    QList<bool> heard;
    bool onMainThread = true;
    std::function<void()> then;
};

/// Everything that was told before the call has been heard after it.
void settle(Reachability &reachability)
{
    (void)reachability.readFlags(); // a turn of the serial queue
    vynlex::settle();
}

} // namespace

class TestReachability : public QObject {
    Q_OBJECT

private slots:
    void init()
    {
        m_platform = std::make_unique<TestPlatform>();
        m_path = m_platform->networkPath;
    }

    void theConnectionKindFollowsTheFlags()
    {
        using Kind = Reachability::Connection;
        const auto reachability = *Reachability::create(m_path->makeSource());
        QVERIFY(!reachability->flags() && reachability->connection() == Kind::unavailable);
        QCOMPARE(description(reachability->flags()), QString("unavailable flags"));
        const auto kindOf = [&](ReachabilityFlags flags, bool allowsCellular) {
            reachability->allowsCellularConnection = allowsCellular;
            m_path->set(flags);
            return reachability->readFlags() ? reachability->connection() : Kind::unavailable;
        };
        QCOMPARE(kindOf(wifi, false), Kind::wifi);
        QVERIFY(description(reachability->flags()) != "unavailable flags");
        QCOMPARE(kindOf(none, true), Kind::unavailable);
        QCOMPARE(kindOf(cellular, true), Kind::cellular);
        QCOMPARE(kindOf(cellular, false), Kind::unavailable);
        QCOMPARE(kindOf(wifi | 1U | 1U << 31, true), Kind::wifi);          // unknown bits beside
        QCOMPARE(kindOf(reachabilityFlag::wwan, true), Kind::unavailable); // without "reachable"
    }

    void failuresSayWhatFailed()
    {
        using Failure = ReachabilitySource::StartFailure;
        QVERIFY(Reachability::create(nullptr).error() == ReachabilityError::failedToCreateWithAddress);

        const auto reachability = *Reachability::create(m_path->makeSource());
        m_path->failNextStart(Failure::Callback);
        QVERIFY(reachability->startNotifier().error() == ReachabilityError::unableToSetCallback);
        m_path->failNextStart(Failure::Queue);
        QVERIFY(reachability->startNotifier().error() == ReachabilityError::unableToSetDispatchQueue);
        QVERIFY(!reachability->notifierRunning());
        QCOMPARE(m_path->startedCount(), 0);
        m_path->failReading(true);
        QVERIFY(reachability->readFlags().error() == ReachabilityError::unableToGetFlags);
        QVERIFY(!reachability->flags());
        // Neither keeps it from watching.
        QVERIFY(reachability->startNotifier());
        m_path->set(wifi);
        TRY_COMPARE(reachability->flags().value_or(none), wifi);
    }

    void changesAreToldOnceEachWhileTheNotifierRuns()
    {
        NotificationCenter center;
        QStringList told;
        const auto reachability = *Reachability::create(m_path->makeSource(), center);
        const auto tell = [&](const char *word) {
            return [&told, word](Reachability &) { told.push_back(MainQueue::isCurrent() ? word : "elsewhere"); };
        };
        reachability->whenReachable = tell("reachable");
        reachability->whenUnreachable = tell("unreachable");
        const auto registration = center.addObserver(
            QStringLiteral("reachabilityChanged"), reachability.get(), [&](const Notification &note) {
                told.push_back(reachabilityOf(note) == reachability ? "note" : "another's note");
            });

        QVERIFY(reachability->startNotifier() && reachability->startNotifier()); // the second does nothing
        QCOMPARE(m_path->startedCount(), 1);
        QVERIFY(told.isEmpty());
        settle(*reachability);
        QCOMPARE(told, (QStringList{"unreachable", "note"})); // the flags that hold at the start
        const auto setAndSettle = [&](ReachabilityFlags flags) {
            told.clear();
            m_path->set(flags);
            settle(*reachability);
            return told;
        };
        QCOMPARE(setAndSettle(none), QStringList());
        QCOMPARE(setAndSettle(wifi), (QStringList{"reachable", "note"}));
        QCOMPARE(setAndSettle(wifi), QStringList());
        QCOMPARE(setAndSettle(cellular), (QStringList{"reachable", "note"}));
        QCOMPARE(setAndSettle(none), (QStringList{"unreachable", "note"}));

        reachability->stopNotifier();
        reachability->stopNotifier();
        QCOMPARE(m_path->startedCount(), 0);
        QVERIFY(!reachability->notifierRunning());
        QCOMPARE(setAndSettle(wifi), QStringList());
    }

    void theDeviceKeepsNoReachabilityAlive()
    {
        auto reachability = *Reachability::create(m_path->makeSource());
        const std::weak_ptr weak = reachability;
        int told = 0;
        reachability->whenReachable = [&](Reachability &) { ++told; };
        QVERIFY(reachability->startNotifier());
        settle(*reachability);
        m_path->set(wifi); // is on its way
        reachability.reset();
        TRY_VERIFY(weak.expired());
        QCOMPARE(m_path->startedCount(), 0);
        QTest::qWait(1);
        QCOMPARE(told, 0);
    }

    void delegatesHearOfEveryChange()
    {
        NetworkReachabilityHandler handler;
        Delegate first;
        Delegate second;
        Delegate replaced;
        handler.addDelegates(first, first.identifier);
        handler.addDelegates(replaced, second.identifier);
        handler.addDelegates(second, second.identifier); // takes the place of who has the same identifier
        m_path->set(wifi);
        handler.startNotifier();
        handler.startNotifier();
        QVERIFY(first.heard.isEmpty());
        TRY_COMPARE(second.heard, QList<bool>{true});
        handler.startNotifier();

        Delegate last; // hears after the others of all that was told
        handler.addDelegates(last, last.identifier);
        m_path->set(wifi);
        m_path->set(none);
        TRY_COMPARE(last.heard, QList<bool>{false});
        handler.removeDelegate(QUuid::createUuid()); // changes nothing
        m_path->set(cellular);
        TRY_COMPARE(last.heard, (QList<bool>{false, true}));
        TRY_COMPARE(first.heard, (QList<bool>{true, false, true}));
        TRY_COMPARE(second.heard, first.heard);
        QVERIFY(first.onMainThread && second.onMainThread && replaced.heard.isEmpty());
        QCOMPARE(m_path->startedCount(), 1);
    }

    void delegatesMayComeAndGoWhileTheyAreTold()
    {
        auto handler = std::make_unique<NetworkReachabilityHandler>();
        std::array<Delegate, 4> delegates;
        Delegate added;
        // Whoever is told first takes itself, its neighbours and all but the last away.
        int calls = 0;
        for (Delegate &delegate : delegates) {
            handler->addDelegates(delegate, delegate.identifier);
            delegate.then = [&] {
                if (++calls > 1)
                    return;
                for (const Delegate &other : delegates)
                    handler->removeDelegate(other.identifier);
                handler->addDelegates(added, added.identifier);
            };
        }
        handler->startNotifier();
        TRY_COMPARE(calls, 1);
        QVERIFY(added.heard.isEmpty());

        Delegate neighbour;
        handler->addDelegates(neighbour, neighbour.identifier);
        added.then = neighbour.then = [&] { handler.reset(); };
        m_path->set(wifi);
        TRY_VERIFY(!handler);
        QCOMPARE(added.heard.size() + neighbour.heard.size(), 1);
        QCOMPARE(calls, 1);
        TRY_COMPARE(m_path->startedCount(), 0);
    }

    void whatCannotBeToldIsNoErrorAndANoteAboutAnythingElseEndsTheProcess()
    {
        m_path->failNextStart(ReachabilitySource::StartFailure::Callback);
        NetworkReachabilityHandler handler;
        handler.startNotifier();
        TRY_VERIFY((handler.startNotifier(), m_path->startedCount() == 1)); // the next call tries again

        struct Stranger : NotificationObject {};
        const Notification note{QStringLiteral("reachabilityChanged"), std::make_shared<Stranger>()};
        QVERIFY(fatalErrorOf([&] { (void)reachabilityOf(note); }).contains("must be a Reachability"));
    }

private:
    std::unique_ptr<TestPlatform> m_platform;
    std::shared_ptr<FakeNetworkPath> m_path;
};

QTEST_GUILESS_MAIN(TestReachability)
#include "tst_reachability.moc"

#include <QtTest>

#include "NetworkManagerMock.h"
#include "PrivateNetwork.h"
#include "ReachabilityContract.h"
#include "platform/network/DeviceReachabilitySource.h"
#include "platform/network/KernelNetwork.h"
#include "platform/network/PathWatchingSource.h"
#include "tests/fakes/FakeReachabilitySource.h"

using namespace vynlex;

namespace {

constexpr ReachabilityFlags wifi = reachabilityFlag::reachable;
constexpr ReachabilityFlags cellular = reachabilityFlag::reachable | reachabilityFlag::wwan;

void ip(const char *arguments)
{
    const QString complaint = PrivateNetwork::ip(QString::fromLatin1(arguments));
    QVERIFY2(complaint.isEmpty(), qPrintable(complaint));
}

/// Starts a source and waits for what it tells.
class Listener {
public:
    explicit Listener(ReachabilitySource &source)
        : m_source(source)
    {
        m_started = source.start([told = m_told](ReachabilityFlags flags) { *told = flags; }).has_value();
    }
    ~Listener() { m_source.stop(); }

    [[nodiscard]] bool hears(ReachabilityFlags flags) const
    {
        return m_started && eventually([&] { return *m_told == flags; }) &&
               m_source.currentFlags().value_or(~0U) == flags;
    }

private:
    ReachabilitySource &m_source;
    bool m_started = false;
    // Owned, because a call that is under way when the source is stopped may still come.
    const std::shared_ptr<std::atomic<ReachabilityFlags>> m_told =
        std::make_shared<std::atomic<ReachabilityFlags>>(~0U);
};

/// A default route over the cable, or none.
void setCable(bool connected)
{
    ip(connected ? "route replace default via 192.0.2.1" : "route del default");
}

} // namespace

class TestReachabilitySource : public QObject {
    Q_OBJECT

private slots:
    void theFakeKeepsItsPromises()
    {
        FakeNetworkPath path;
        contract::sourceKeepsItsPromises([&] { return path.makeSource(); },
                                         [&](ReachabilityFlags flags) { path.set(flags); });
    }

    void onlyAnotherKindOfNetworkIsAnotherWay()
    {
        FakeNetworkPath path;
        int changes = 0;
        const auto make = [&] { return std::make_unique<PathWatchingSource>(path.makeSource(), [&] { ++changes; }); };
        contract::sourceKeepsItsPromises(make, [&](ReachabilityFlags flags) { path.set(flags); });
        path.set(wifi);
        PathWatchingSource source(path.makeSource(), [&] { ++changes; });
        const Listener listener(source);
        for (const auto &[flags, changesByNow] :
             {std::pair{wifi, 0}, {0U, 0}, {wifi, 0}, {cellular, 1}, {0U, 1}, {cellular, 1}, {0U, 1}, {wifi, 2}}) {
            path.set(flags);
            QVERIFY(listener.hears(flags));
            QCOMPARE(changes, changesByNow);
        }
    }

    void linksOfTheCellularNetwork()
    {
        const auto is = [](const char *name, const char *kind = "") {
            return isCellular({1, name, kind, false, true});
        };
        for (const char *name : {"wwan0", "wwp0s20u4", "rmnet_data0", "v4-rmnet_data0", "ccmni1"})
            QVERIFY2(is(name), name);
        for (const char *name : {"wlan0", "wlp3s0", "eth0", "enp0s31f6", "ppp0", "tun0", "usb0"})
            QVERIFY2(!is(name), name);
        QVERIFY(is("modem", "rmnet")); // by its kind
    }

    void theKernelSaysWhetherAndNetworkManagerOverWhat()
    {
        QVERIFY(!combinedFlags({}, {}));
        QVERIFY(combinedFlags(wifi, {}) == wifi);
        QVERIFY(combinedFlags({}, cellular) == cellular);
        QVERIFY(combinedFlags(wifi, cellular) == cellular); // a modem behind an Ethernet link
        QVERIFY(combinedFlags(cellular, wifi) == wifi);
        QVERIFY(combinedFlags(wifi, 0U) == wifi); // a link that it does not manage
        QVERIFY(combinedFlags(0U, wifi) == 0U);   // a daemon that is gone
    }

    void netlinkKeepsItsPromises()
    {
        if (!hasCable())
            QSKIP("This machine allows no network of the test's own.");
        contract::sourceKeepsItsPromises([] { return std::make_unique<NetlinkReachabilitySource>(); },
                                         [](ReachabilityFlags flags) { setCable(flags != 0); });
    }

    void theKernelsRoutesDecide()
    {
        if (!hasCable())
            QSKIP("This machine allows no network of the test's own.");
        NetlinkReachabilitySource source;
        const Listener listener(source);
        const auto becomes = [&](ReachabilityFlags flags) { return listener.hears(flags); };
        ip("link set lo up"); // with nothing but loopback and a private network
        QVERIFY(becomes(0));
        ip("route add default via 192.0.2.1 metric 100");
        QVERIFY(becomes(wifi));

        ip("link add wwan0 type veth peer name tower");
        ip("link set tower up");
        ip("link set wwan0 up");
        ip("address add 198.51.100.2/24 dev wwan0");
        ip("route add default via 198.51.100.1 metric 50"); // better than the cable
        QVERIFY(becomes(cellular));
        ip("-6 address add 2001:db8::2/64 dev cable nodad");
        ip("-6 route add default via 2001:db8::1 dev cable"); // cellular for one family alone is not cellular
        QVERIFY(becomes(wifi));
        ip("-6 route del default");
        QVERIFY(becomes(cellular));
        ip("route del default metric 50");
        QVERIFY(becomes(wifi));

        ip("link set plug down"); // the cable is pulled; its route stays
        QVERIFY(becomes(0));
        ip("link set plug up");
        QVERIFY(becomes(wifi));
        ip("route add unreachable default metric 5");
        QVERIFY(becomes(0));
        ip("-6 route add default via 2001:db8::1 dev cable");
        QVERIFY(becomes(wifi));           // by IPv6 alone
        ip("-6 address flush dev cable"); // a route without an address
        QVERIFY(becomes(0));
        ip("route add default metric 4 nexthop via 198.51.100.1 nexthop via 198.51.100.3");
        QVERIFY(becomes(cellular));
    }

    void networkManagerKeepsItsPromises()
    {
        QVERIFY2(m_manager.start(), "dbus-daemon");
        NetworkManagerReachabilitySource source;
        {
            const Listener listener(source);
            QVERIFY(!source.currentFlags()); // it is not waited for
            QVERIFY(listener.hears(0));      // it is there
            using Mock = NetworkManagerMock;
            for (const auto &[state, primary, flags] : {std::tuple{Mock::Global, Mock::Modem, cellular},
                                                        {Mock::Global, Mock::Wifi, wifi},
                                                        {Mock::Local, Mock::Wifi, 0U},
                                                        {Mock::Site, Mock::Ethernet, wifi},
                                                        {Mock::Connecting, Mock::Ethernet, 0U}}) {
                m_manager.set(state, primary);
                QVERIFY(listener.hears(flags));
            }
        }
        contract::sourceKeepsItsPromises([] { return std::make_unique<NetworkManagerReachabilitySource>(); },
                                         [this](ReachabilityFlags flags) {
                                             m_manager.set(flags ? NetworkManagerMock::Global
                                                                 : NetworkManagerMock::Disconnected);
                                         });
    }

    /// After the one before, which has loaded what stays loaded.
    void theShippedSourceListensToBoth()
    {
        if (!hasCable())
            QSKIP("This machine allows no network of the test's own.");
        ip("route flush default");
        contract::sourceKeepsItsPromises([] { return std::make_unique<DeviceReachabilitySource>(); },
                                         [](ReachabilityFlags flags) { setCable(flags != 0); });
        DeviceReachabilitySource source;
        const Listener listener(source);
        setCable(true);
        QVERIFY(listener.hears(wifi)); // NetworkManager knows nothing of the cable
        m_manager.set(NetworkManagerMock::Global, NetworkManagerMock::Modem);
        QVERIFY(listener.hears(cellular));
        m_manager.set(NetworkManagerMock::Disconnected);
        QVERIFY(listener.hears(wifi));
    }

private:
    bool hasCable()
    {
        if (!m_cable)
            m_cable = PrivateNetwork::plugInCable();
        return *m_cable;
    }

    NetworkManagerMock m_manager;
    std::optional<bool> m_cable;
};

int main(int argc, char **argv)
{
    PrivateNetwork::enter(argv);
    QCoreApplication application(argc, argv);
    TestReachabilitySource test;
    QTEST_SET_MAIN_SOURCE_PATH
    return QTest::qExec(&test, argc, argv);
}

#include "tst_reachability_source.moc"

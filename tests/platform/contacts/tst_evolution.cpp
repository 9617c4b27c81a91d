#include "EvolutionServer.h"

#include <QLocalServer>

#include <algorithm>
#include <future>

#include "ContactStoreContract.h"
#include "platform/contacts/DeviceContactStore.h"
#include "platform/contacts/EvolutionAddressBook.h"
#include "tests/fakes/Suite.h"

using namespace vynlex;
using namespace std::chrono_literals;

/// Against a real Evolution Data Server, whose life ends with the last function: they build upon each other.
class TestEvolution : public QObject {
    Q_OBJECT

private slots:
    void initTestCase()
    {
        if (!EvolutionServer::isInstalled())
            QSKIP("The package evolution-data-server is not installed.");
        QVERIFY2(m_server.start(), "dbus-daemon");
        m_applications.reset(g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, nullptr));
    }

    void askingForItStartsNothing()
    {
        QVERIFY(EvolutionAddressBook::isInstalled());
        QCOMPARE(m_server.processOf(EvolutionServer::registry), 0);
    }

    void itsContactsAreRead()
    {
        const std::vector<AddressBookContact> contacts{
            {QStringLiteral("આશા"), QStringLiteral("પટેલ"), {"+91 98765-43210", "022 1234"}},
            {"Taxi", "", {}},
        };
        QVERIFY(contract::accessGrantedBy(std::make_unique<DeviceContactStore>()));
        DeviceContactStore store;
        const auto none = contract::enumerated(store);
        QVERIFY2(none.result, qPrintable(contract::failureOf(none.result)));
        QVERIFY(none.contacts.empty());

        QCOMPARE(EvolutionServer::add(
                     {QStringLiteral("BEGIN:VCARD\r\nVERSION:3.0\r\nN:પટેલ;આશા;;;\r\nTEL;TYPE=CELL:+91 98765-43210\r\n"
                                     "TEL;TYPE=HOME:022 1234\r\nEND:VCARD\r\n")
                          .toUtf8(),
                      "BEGIN:VCARD\r\nVERSION:3.0\r\nFN:Taxi\r\nEND:VCARD\r\n"}),
                 QString());
        auto all = contract::enumerated(store);
        QVERIFY2(all.result, qPrintable(contract::failureOf(all.result)));
        std::sort(all.contacts.begin(), all.contacts.end(),
                  [](const auto &a, const auto &b) { return a.phoneNumbers.size() > b.phoneNumbers.size(); });
        QVERIFY(all.contacts == contacts);
    }

    void aServerThatHangsIsGivenUp()
    {
        // The list of address books may still be there from before, so it is not enough that its service alone hangs.
        m_server.send(EvolutionServer::registry, SIGSTOP);
        m_server.send(EvolutionServer::addressBooks, SIGSTOP);
        EvolutionAddressBook book(500ms);
        QVERIFY(!book.canBeRead());
        const auto result = book.read([](const AddressBookContact &) {});
        m_server.send(EvolutionServer::addressBooks, SIGCONT);
        m_server.send(EvolutionServer::registry, SIGCONT);
        QCOMPARE(contract::failureOf(result), "Evolution Data Server has not answered for 0.5 s.");
        QVERIFY(EvolutionAddressBook().canBeRead());
    }

    void aServerThatDiesIsSaid()
    {
        const auto read = [] { return EvolutionAddressBook(3s).read([](const AddressBookContact &) {}); };
        QString failure;
        // Before anybody waits for its answer its death goes unseen: then it is started again.
        for (int wait = 200; failure.isEmpty() && wait < patienceMs; wait *= 2) {
            m_server.send(EvolutionServer::addressBooks, SIGSTOP);
            auto reading = std::async(std::launch::async, read);
            QTest::qWait(wait);
            m_server.send(EvolutionServer::addressBooks, SIGKILL);
            failure = contract::failureOf(reading.get());
        }
        QVERIFY(failure.endsWith('.') || failure.startsWith("The address book \"Personal\" cannot be read: "));
        TRY_VERIFY(read()); // it is started again
    }

    void anAddressBookThatCannotBeReadLeavesTheOthers()
    {
        m_server.addBrokenBook();
        m_server.send(EvolutionServer::registry, SIGKILL);
        int count = 0;
        const auto result = EvolutionAddressBook().read([&](const AddressBookContact &) { ++count; });
        const QString failure = contract::failureOf(result);
        QVERIFY2(failure.startsWith("The address book \"Broken\" cannot be read: "), qPrintable(failure));
        QCOMPARE(count, 2);
    }

    void aBusThatEndsTakesNobodyAlong()
    {
        m_server.endBus();
        TRY_VERIFY(g_dbus_connection_is_closed(m_applications.get()));
        QTest::qWait(100); // for what would end the process
        QVERIFY(!EvolutionAddressBook::isInstalled());
        QVERIFY(!EvolutionAddressBook().canBeRead());
        QVERIFY(!EvolutionAddressBook().read([](const AddressBookContact &) {}));
    }

    void aBusThatIsSilentIsGivenUp()
    {
        const QTemporaryDir folder;
        QLocalServer silent; // the kernel accepts, and nobody answers
        QVERIFY(silent.listen(folder.filePath("bus")));
        qputenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=" + silent.fullServerName().toUtf8());
        QVERIFY(!EvolutionAddressBook::isInstalled(200ms));
    }

private:
    EvolutionServer m_server;
    GObjectPointer<GDBusConnection> m_applications; // GLib's, which the application and the kit share
};

template struct vynlex::InSuite<TestEvolution>;

#include "tst_evolution.moc"

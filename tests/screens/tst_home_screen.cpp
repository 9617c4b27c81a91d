#include "api/VLApiManager.h"
#include "chat/ChatViewModel.h"
#include "chat/SocketManager.h"
#include "language/LanguageTranslation.h"
#include "platform/ui/AlertController.h"
#include "platform/ui/NavigationController.h"
#include "screens/ChatVC.h"
#include "screens/HomeVC.h"
#include "tests/fakes/CapturedConsole.h"
#include "tests/fakes/Patience.h"
#include "tests/fakes/Rows.h"
#include "tests/fakes/Secrets.h"
#include "tests/fakes/Suite.h"
#include "tests/fakes/TestPlatform.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QTest>

using namespace vynlex;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

const QString tokens = u"/api/externalservertp/get-token"_s;
const QString recents = u"/api/calls"_s;
const QString users = u"/api/contacts/all"_s;
const QString uploads = u"/api/contacts/append"_s;

const QByteArray token = QByteArray("{\"jwt\":\"") + secrets::jwt.data() + "\"}"; // of "me"
const QByteArray calls = R"({"totalCount":3,"moreAvailable":false,"callHistory":[
    {"userId":"u1","ownerName":"Anna","ownerPhoneNo":"11111"}, {"userId":"u9","ownerName":"Nobody"},
    {"userId":"u2","ownerName":"Brian","ownerPhoneNo":""}]})";

} // namespace

class tst_home_screen : public QObject {
    Q_OBJECT

    std::unique_ptr<TestPlatform> m_platform;
    std::unique_ptr<VLApiManager> m_api;
    std::unique_ptr<LanguageTranslation> m_languages;
    std::unique_ptr<ChatViewModel> m_chat;
    std::unique_ptr<SocketManager> m_sockets;
    std::shared_ptr<HomeVC> m_screen;

    [[nodiscard]] FakeHttpNetwork &backend() const { return *m_platform->network; }
    [[nodiscard]] FakeContactStore &contacts() const { return *m_platform->contactStore; }

    /// The numbers of the requests to this path.
    [[nodiscard]] std::vector<int> requests(const QString &path) const
    {
        std::vector<int> numbers;
        for (int number = 0; number < backend().requestCount(); ++number) {
            if (backend().request(number).url.path() == path)
                numbers.push_back(number);
        }
        return numbers;
    }
    /// The latest of them.
    void answer(const QString &path, const QByteArray &body) const
    {
        backend().answer(requests(path).back(), 200, body);
        settle();
    }

    [[nodiscard]] QVariant cell(int row, const QByteArray &role) const
    {
        const QAbstractItemModel *table = m_screen->tableView();
        return table->data(table->index(row, 0), table->roleNames().key(role));
    }
    [[nodiscard]] QStringList names() const
    {
        QStringList all;
        for (int row = 0; row < m_screen->tableView()->rowCount(); ++row)
            all << cell(row, "name").toString();
        return all;
    }

    /// Opens the Contacts tab until so many numbers have been read from the address book.
    [[nodiscard]] bool showContacts(int numbers, const QByteArray &signedUp = {}) const
    {
        return eventually([&] {
            m_screen->contactsButtonTapped();
            answer(users, R"({"contacts":[)" + signedUp + "]}");
            return m_screen->tableView()->rowCount() == numbers;
        });
    }

    /// The token that the latest socket logs in with.
    [[nodiscard]] QString loginToken() const
    {
        m_platform->socketWorker->run();
        FakeSocket server = m_platform->socketWorker->lastSocket();
        server.connected();
        settle();
        m_platform->socketWorker->run();
        return QJsonDocument::fromJson(server.sent().front().data)["data"]["token"].toString();
    }

    /// With whom the presented chat is, if there is one.
    [[nodiscard]] User presentedPerson() const
    {
        const auto navigation = std::dynamic_pointer_cast<NavigationController>(m_screen->presentedViewController());
        const auto chat = std::dynamic_pointer_cast<ChatVC>(navigation ? navigation->rootViewController() : nullptr);
        return chat ? chat->userModel : User{};
    }
    /// The message of the presented alert, which is dismissed.
    [[nodiscard]] QString takeAlert() const
    {
        const auto alert = std::dynamic_pointer_cast<AlertController>(m_screen->presentedViewController());
        if (!alert || alert->title() != u"Error"_s || alert->actionTitles() != QStringList(u"Ok"_s))
            return u"no alert"_s;
        alert->didPressAction(0);
        return alert->message();
    }

private slots:
    void init()
    {
        m_platform = std::make_unique<TestPlatform>();
        contacts().setContacts({{u"Anna"_s, u"Rao"_s, {u"+91 98765-43210"_s, u"22222"_s}},
                                {u"Nobody"_s, u"Known"_s, {}},
                                {u"Brian"_s, {}, {u"33333"_s}}});
        m_api = std::make_unique<VLApiManager>();
        m_languages = std::make_unique<LanguageTranslation>(m_platform->userDefaults);
        m_chat = std::make_unique<ChatViewModel>(*m_api);
        m_sockets = std::make_unique<SocketManager>(*m_chat);
        m_screen = std::make_shared<HomeVC>(*m_api, *m_languages, *m_sockets);
        m_screen->webToken = secrets::webToken;
    }

    void cleanup()
    {
        contacts().letRead();
        m_screen.reset();
        m_sockets.reset();
    }

    void theTokenLoadsTheScreen()
    {
        contacts().holdReadingAfter(1);
        m_screen->fetchJWToken([this] { m_screen->loadData(); });
        QCOMPARE(backend().lastRequest().body, QByteArray("{\"jwt\":\"") + secrets::webToken.data() + "\"}");
        answer(tokens, R"({"refToken":"r"})");
        QCOMPARE(backend().requestCount(), 1);

        m_screen->fetchJWToken([this] { m_screen->loadData(); });
        answer(tokens, token);
        QCOMPARE(m_api->currentUserGuestID, u"me"_s);
        QCOMPARE(contacts().accessRequests(), 1);
        QVERIFY(m_screen->isActivityIndicatorAnimating());
        QCOMPARE(backend().lastRequest().url.query(), u"callCategory=one_to_one_call,group_call&limit=200&offset=0"_s);
        answer(recents, calls);
        QVERIFY(!m_screen->isActivityIndicatorAnimating());
        QCOMPARE(names(), (QStringList{u"Anna"_s, u"Brian"_s}));
        QCOMPARE(cell(0, "phoneNumber").toString(), u"11111"_s);
        QCOMPARE(cell(0, "initials").toString(), u"A"_s);
        QVERIFY(!cell(0, "phoneNumberHidden").toBool() && cell(1, "phoneNumberHidden").toBool());

        // The backend is told what has been read after half a second, even if that is not all.
        QVERIFY(showContacts(2));
        m_platform->clock->advance(499ms);
        QVERIFY(requests(uploads).empty());
        m_platform->clock->advance(1ms);
        settle();
        QVERIFY(m_screen->isActivityIndicatorAnimating());
        QCOMPARE(backend().lastRequest().body, R"({"contacts":[{"name":"Anna Rao","phoneNo":"919876543210"},)"
                                               R"({"name":"Anna Rao","phoneNo":"22222"}]})");
        backend().fail(requests(uploads).back(), {});
        settle();
        QVERIFY(!m_screen->isActivityIndicatorAnimating());

        contacts().letRead();
        QVERIFY(showContacts(3));
        QCOMPARE(names(), (QStringList{u"Anna Rao "_s, u"Anna Rao "_s, u"Brian  "_s}));
        m_screen->loadData();
        QVERIFY(showContacts(6)); // nothing is forgotten
    }

    void theSocketHasTheTokenWheneverItComes_data() { addRows<bool>({{"before loading", true}, {"after", false}}); }
    void theSocketHasTheTokenWheneverItComes()
    {
        const auto [early] = currentRow<bool>();
        if (!early) {
            m_screen->loadViewIfNeeded();
            QCOMPARE(loginToken(), QString());
        }
        m_screen->fetchJWToken([] {});
        answer(tokens, token);
        if (early)
            m_screen->loadViewIfNeeded();
        QCOMPARE(loginToken(), secrets::jwt);
        QCOMPARE(m_platform->socketWorker->socketCount(), early ? 1 : 2);
        QCOMPARE(m_platform->socketWorker->lastSocket().request().url.host(), m_api->currentEnv.socketHost());

        m_chat->receivedID = u"anna"_s;
        m_platform->socketWorker->lastSocket().text(
            R"({"event":"chatMessage","data":{"_id":"m","threadId":"T","createdBy":"anna"}})");
        settle();
        QCOMPARE(m_chat->aryMessages.size(), 1U);
    }

    void aLateAnswerSignsNoFormerUserIn()
    {
        m_screen->fetchJWToken([] { QFAIL("a former user"); });
        m_screen->webToken = u"another"_s;
        bool signedIn = false;
        m_screen->fetchJWToken([&] { signedIn = true; });
        answer(tokens, token);
        QVERIFY(signedIn);
        backend().answer(requests(tokens).front(), 200, R"({"jwt":"a.eyJ1c2VySWQiOiJmb3JtZXIifQ.c"})");
        QCOMPARE(m_api->currentUserGuestID, u"me"_s);
    }

    void anAddressBookThatCannotBeReadIsALine_data()
    {
        addRows<bool, QString, int>({{"refused", true, u"Access to contacts denied."_s, 0},
                                     {"failing", false, u"Error fetching contacts: The disk is full."_s, 3}});
    }
    void anAddressBookThatCannotBeReadIsALine()
    {
        const auto [refused, line, read] = currentRow<bool, QString, int>();
        const CapturedConsole console;
        if (refused)
            contacts().refuseAccess();
        else
            contacts().failReading(u"The disk is full."_s);
        m_screen->loadData();
        TRY_COMPARE(console.lines(), QStringList(line));
        QVERIFY(showContacts(read));
        m_platform->clock->advance(500ms); // told all the same
        QCOMPARE(QJsonDocument::fromJson(backend().lastRequest().body)["contacts"].toArray().size(), read);
    }

    void aContactIsWhoeverHasItsNumber()
    {
        m_api->setCredentials(u"me"_s, secrets::jwt);
        m_screen->loadData();
        QVERIFY(showContacts(3));
        m_screen->callButtonTapped(0); // the backend has named nobody
        QCOMPARE(takeAlert(), u"User is not signed up on Confera"_s);

        QVERIFY(showContacts(3, R"({"id":"other","phoneNo":"22222"},{"id":"anna","phoneNo":"9876543210"},
                                   {"id":"twin","phoneNo":"+919876543210"},{"id":"me","phoneNo":"33333"})"));
        m_screen->voiceButtonTapped(2);
        QCOMPARE(takeAlert(), u"Can't send message to self"_s);
        m_screen->callButtonTapped(3); // no such row
        QVERIFY(!m_screen->presentedViewController());
        m_screen->voiceButtonTapped(0);
        m_screen->voiceButtonTapped(1); // while the first is there
        QCOMPARE(presentedPerson(), (User{u"anna"_s, u"Anna Rao "_s, {}, u"+91 98765-43210"_s}));
        QCOMPARE(m_chat->receivedID, u"anna"_s);
    }

    void theTabsTakeTurns()
    {
        const auto looksActive = [](const ButtonState &active, const ButtonState &other) {
            const QColor blue(u"#0F3CC9"_s);
            return active.titleColor() == Qt::white && active.backgroundColor() == blue && other.titleColor() == blue &&
                   other.backgroundColor() == Qt::transparent;
        };
        QVERIFY(m_screen->isRecentsActive() && looksActive(*m_screen->recentsButton, *m_screen->contactsButton));
        m_screen->loadData();
        m_screen->searchBarTextDidChange(u"an"_s);
        QVERIFY(showContacts(3));
        QVERIFY(m_screen->isContactsActive() && looksActive(*m_screen->contactsButton, *m_screen->recentsButton));
        QCOMPARE(m_screen->searchBarText(), QString());
        answer(recents, calls); // for the tab that was left
        m_screen->contactsButtonTapped();
        backend().answer(requests(users).back(), 500);
        settle();
        QCOMPARE(names().size(), 3);

        m_screen->contactsButtonTapped();
        m_screen->recentsButtonTapped();
        m_screen->recentsButtonTapped();
        QVERIFY(m_screen->isRecentsActive() && looksActive(*m_screen->recentsButton, *m_screen->contactsButton));
        m_screen->callButtonTapped(0); // still a contact, of whom no id is known
        QVERIFY(!m_screen->presentedViewController());
        answer(users, "{}"); // for the tab that was left
        answer(recents, calls);
        backend().answer(requests(recents).end()[-2], 200, calls); // overtaken
        settle();
        QCOMPARE(names(), (QStringList{u"Anna"_s, u"Brian"_s}));
    }

    void theTableShowsWhatIsSearched()
    {
        const CapturedConsole console;
        m_screen->searchBarTextDidChange(u"BR"_s);
        m_screen->recentsButtonTapped();
        m_screen->searchBarTextDidChange(u"RI"_s);
        answer(recents, calls); // is searched when it comes
        QCOMPARE(names(), QStringList(u"Brian"_s));
        m_screen->searchBarSearchButtonClicked();
        m_screen->searchBarCancelButtonClicked();
        QCOMPARE(m_screen->searchBarText(), QString());
        QCOMPARE(names(), QStringList(u"Brian"_s)); // until the text changes
        m_screen->callButtonTapped(0);
        QCOMPARE(presentedPerson(), (User{u"u2"_s, u"Brian"_s, {}, {}}));
        m_screen->searchBarTextDidChange({});
        QCOMPARE(names().size(), 2);
        QCOMPARE(console.lines(),
                 (QStringList{u"Current search text: BR"_s, u"Current search text: RI"_s, u"Current search text: "_s}));
    }
};

template struct vynlex::InSuite<tst_home_screen>;

#include "tst_home_screen.moc"

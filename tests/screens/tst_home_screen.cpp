#include "api/VLApiManager.h"
#include "chat/ChatViewModel.h"
#include "chat/SocketManager.h"
#include "conversation/ConversationTranslateVC.h"
#include "language/LanguageTranslation.h"
#include "platform/ui/NavigationController.h"
#include "screens/ChatVC.h"
#include "screens/HomeVC.h"
#include "tests/fakes/CapturedConsole.h"
#include "tests/fakes/Rows.h"
#include "tests/fakes/Suite.h"
#include "tests/fakes/TestPlatform.h"

#include <QJsonDocument>
#include <QTest>

using namespace vynlex;
using namespace Qt::StringLiterals;

namespace {

const QString tokens = u"/api/externalservertp/get-token"_s;
const QString recents = u"/api/calls"_s;

const QByteArray token = R"({"jwt":"a.eyJ1c2VySWQiOiJtZSJ9.c"})"; // of "me"
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
private slots:
    void init()
    {
        m_platform = std::make_unique<TestPlatform>();
        m_api = std::make_unique<VLApiManager>();
        m_languages = std::make_unique<LanguageTranslation>(m_platform->userDefaults);
        m_chat = std::make_unique<ChatViewModel>(*m_api);
        m_sockets = std::make_unique<SocketManager>(*m_chat);
        m_screen = std::make_shared<HomeVC>(*m_api, *m_languages, *m_sockets);
        m_screen->webToken = u"web token"_s;
    }

    void cleanup()
    {
        m_screen.reset();
        m_sockets.reset();
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
        QCOMPARE(loginToken(), u"a.eyJ1c2VySWQiOiJtZSJ9.c"_s);
        QCOMPARE(m_platform->socketWorker->socketCount(), early ? 1 : 2);
        QCOMPARE(m_platform->socketWorker->lastSocket().request().url.host(), m_api->currentEnv.socketHost());

        m_chat->receivedID = u"anna"_s;
        m_platform->socketWorker->lastSocket().text(
            R"({"event":"chatMessage","data":{"_id":"m","threadId":"T","createdBy":"anna"}})");
        settle();
        QCOMPARE(m_chat->aryMessages.size(), 1U);
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

    void otherScreensAreOpened()
    {
        m_languages->store(Side::Speaker, LanguageOption::telugu);
        m_screen->didPressLanguageButtonTapped();
        LanguageSelectionView *const picker = m_screen->languageSelectionView();
        QVERIFY(picker && picker->isShown() && picker->isFromSpeaker);
        QCOMPARE(picker->selectedLanguage, LanguageOption::telugu);
        m_screen->translateLanguageButtonTapped();
        QVERIFY(std::dynamic_pointer_cast<ConversationTranslateVC>(m_screen->presentedViewController()));
    }
};

template struct vynlex::InSuite<tst_home_screen>;

#include "tst_home_screen.moc"

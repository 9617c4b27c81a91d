#include "api/VLApiManager.h"
#include "chat/ChatViewModel.h"
#include "chat/SocketManager.h"
#include "conversation/ConversationTranslateVC.h"
#include "language/LanguageTranslation.h"
#include "screens/ChatVC.h"
#include "screens/HomeVC.h"
#include "tests/fakes/Patience.h"
#include "tests/fakes/Rows.h"
#include "tests/fakes/Suite.h"
#include "tests/fakes/TestPlatform.h"

#include <QHash>
#include <QTest>

#include <set>

using namespace vynlex;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

using SideState = ConversationTranslateVC::SideState;

/// What a user can be in the middle of when they leave.
enum class Moment {
    Idle,
    Listening,
    Translating,
    Reading,
    Opening,
    Loading,
    Recorded,
    Sending,
    Previewing,
    Playing,
    SigningIn,
    AskingForContacts,
};
/// How the services end what they were asked for, once the screen is gone and opened anew.
enum class Ending { WithAnswers, WithFailures };

const QHash<QByteArray, QByteArray> answers{
    {"POST /translate", R"([{"translations":[{"text":"नमस्ते।","to":"hi"}]}])"},
    {"POST /api/externalservertp/get-token", R"({"jwt":"a.eyJ1c2VySWQiOiJuZXh0In0.c"})"}, // of "next"
    {"GET /api/calls",
     R"({"totalCount":1,"moreAvailable":false,
         "callHistory":[{"userId":"asha","ownerName":"Asha","ownerPhoneNo":"1"}]})"},
    {"GET /api/contacts/all", R"({"contacts":[{"id":"asha","phoneNo":"1"}]})"},
    {"PUT /api/contacts/append", R"({"success":true})"},
    {"POST /api/chat/thread", R"({"_id":"T1"})"},
    {"GET /api/chat/thread/T1/messages",
     R"({"messages":[{"_id":"m1","threadId":"T1","createdBy":"asha","messageComponent":{"text":"Hello."}}]})"},
    {"POST /api/chat/thread/T1/messages", R"({"_id":"m2","threadId":"T1","createdBy":"me"})"},
};

} // namespace

/// Leaves a screen in each state and opens it again at once; then the services end what the first had asked for.
class tst_leaving : public QObject {
    Q_OBJECT

    std::unique_ptr<TestPlatform> m_platform;
    std::unique_ptr<VLApiManager> m_api;
    std::unique_ptr<LanguageTranslation> m_languages;
    std::unique_ptr<ChatViewModel> m_chat;
    std::shared_ptr<ViewController> m_root; ///< The screen below.
    std::set<int> m_answered;               ///< Requests.

    [[nodiscard]] FakeSpeechService &speech() const { return *m_platform->speechService; }
    [[nodiscard]] FakeHttpNetwork &network() const { return *m_platform->network; }

    void answerAll(Ending how, int until)
    {
        for (int i = 0; i < until; ++i) {
            if (!m_answered.insert(i).second)
                continue;
            const HttpRequest request = network().request(i);
            if (how == Ending::WithFailures)
                network().fail(i, {TransportError::Kind::Io, u"lost"_s});
            else
                network().answer(i, 200, answers.value(request.method + ' ' + request.url.path().toUtf8()));
        }
        settle();
    }
    void answerAll() { answerAll(Ending::WithAnswers, network().requestCount()); }

    [[nodiscard]] bool isHeard() const
    {
        return eventually([this] { return speech().recognitionCount() == 1 && microphoneRuns(); });
    }
    [[nodiscard]] bool microphoneRuns() const
    {
        return m_platform->audio->captureCount() > 0 && m_platform->audio->lastCapture().isRunning();
    }
    [[nodiscard]] bool isRead() const
    {
        return eventually([this] { return speech().utteranceCount() == 1; });
    }

    bool reach(Moment moment, ConversationTranslateVC &screen)
    {
        if (moment == Moment::Idle)
            return true;
        screen.didPressSpeakerButtonAction();
        if (!isHeard() || moment == Moment::Listening)
            return isHeard();
        speech().lastRecognition().deliverRecognized(u"Hello."_s);
        if (!eventually([&] { return network().requestCount() == 1; }) || moment == Moment::Translating)
            return network().requestCount() == 1;
        answerAll();
        screen.didPressListenerSideTextToSpeachButtonAction();
        return isRead();
    }

    bool reach(Moment moment, ChatVC &screen)
    {
        if (moment == Moment::Opening)
            return network().requestCount() == 1;
        answerAll();
        if (moment == Moment::Loading)
            return network().requestCount() == 2;
        answerAll();
        if (moment == Moment::Playing) {
            screen.didPressPlayButton(0);
            return isRead();
        }
        screen.voiceChatAction();
        if (!isHeard() || moment == Moment::Listening)
            return isHeard();
        speech().lastRecognition().deliverRecognized(u"Hello."_s);
        settle();
        screen.stopRecordingORsendMessageAction();
        if (moment == Moment::Sending)
            screen.stopRecordingORsendMessageAction();
        if (moment == Moment::Previewing)
            screen.audioPlayButtonAction();
        return moment != Moment::Previewing || isRead();
    }

    bool reach(Moment moment, HomeVC &screen)
    {
        screen.fetchJWToken([&screen] { screen.loadData(); });
        if (moment == Moment::SigningIn)
            return network().requestCount() == 1;
        answerAll();
        if (moment == Moment::AskingForContacts) {
            screen.loadData();
            return m_platform->contactStore->accessRequests() == 2;
        }
        m_platform->clock->advance(500ms);
        screen.contactsButtonTapped();
        return network().requestCount() == 4; // the token, the calls, the upload and the contacts
    }

    /// The new screen has asked for something of its own since `requestsBefore`, which stays open.
    void endEverything(Ending how, int requestsBefore)
    {
        if (speech().recognitionCount() > 0) {
            FakeRecognition recognition = speech().lastRecognition();
            if (how == Ending::WithAnswers)
                recognition.deliverRecognized(u"Late."_s);
            else
                recognition.deliverCanceled({CancellationReason::Error, CancellationErrorCode::ConnectionFailure, {}});
        }
        if (speech().utteranceCount() > 0) {
            FakeUtterance utterance = speech().lastUtterance();
            how == Ending::WithAnswers ? utterance.complete() : utterance.cancel({});
            TRY_VERIFY(!utterance.isSpeaking());
        }
        answerAll(how, requestsBefore);
        m_platform->clock->advance(2min);
        settle();
    }

    void nothingRuns()
    {
        QCOMPARE(m_platform->clock->runningTimers(), 0U);
        QVERIFY(speech().textsBeingSpoken().isEmpty());
        if (speech().recognitionCount() > 0)
            TRY_VERIFY(!speech().lastRecognition().isAlive());
        QVERIFY(!microphoneRuns());
    }

private slots:
    void init()
    {
        m_platform = std::make_unique<TestPlatform>();
        m_api = std::make_unique<VLApiManager>();
        m_api->setCredentials(u"me"_s, u"a.b.c"_s);
        m_api->translatedConfig = VLTranslationConfig(u"speech-key"_s, u"testregion"_s, u"text-key"_s);
        m_languages = std::make_unique<LanguageTranslation>(m_platform->userDefaults);
        m_chat = std::make_unique<ChatViewModel>(*m_api);
        m_root = std::make_shared<ViewController>();
        m_answered.clear();
    }
    void cleanup()
    {
        m_root.reset();
        TRY_VERIFY(m_platform->audio->captureCount() == 0 || !m_platform->audio->lastCapture().isAlive());
    }

    void theConversationIsNewAgain_data()
    {
        using enum Moment;
        using enum Ending;
        addRows<Moment, Ending>({{"idle", Idle, WithAnswers},
                                 {"listening, recognised", Listening, WithAnswers},
                                 {"listening, cancelled", Listening, WithFailures},
                                 {"translating, translated", Translating, WithAnswers},
                                 {"translating, failed", Translating, WithFailures},
                                 {"reading, heard", Reading, WithAnswers},
                                 {"reading, cancelled", Reading, WithFailures}});
    }
    void theConversationIsNewAgain()
    {
        const auto [moment, ending] = currentRow<Moment, Ending>();
        auto first = std::make_shared<ConversationTranslateVC>(*m_api, *m_languages);
        m_root->present(first, Animated::No);
        QVERIFY(reach(moment, *first));
        first->didPressBackButtonAction();
        const std::weak_ptr gone = std::exchange(first, nullptr);
        const auto second = std::make_shared<ConversationTranslateVC>(*m_api, *m_languages);
        m_root->present(second, Animated::No);
        TRY_VERIFY(gone.expired());
        endEverything(ending, network().requestCount());

        QVERIFY(second->speakerShowsPrompt() && second->listenerShowsPrompt());
        QVERIFY(second->speakerState() == SideState::Idle && second->listenerState() == SideState::Idle);
        QVERIFY(second->speakerMicButton->isEnabled() && second->listenerMicButton->isEnabled());
        QVERIFY(second->speakerTextToSpeachButton->isHidden() && second->listenerTextToSpeachButton->isHidden());
        nothingRuns();
    }

    void theChatIsNewAgain_data()
    {
        using enum Moment;
        using enum Ending;
        addRows<Moment, Ending>({{"opening, answered", Opening, WithAnswers},
                                 {"opening, failed", Opening, WithFailures},
                                 {"loading, answered", Loading, WithAnswers},
                                 {"loading, failed", Loading, WithFailures},
                                 {"recording, recognised", Listening, WithAnswers},
                                 {"recording, cancelled", Listening, WithFailures},
                                 {"recorded", Recorded, WithAnswers},
                                 {"sending, sent", Sending, WithAnswers},
                                 {"sending, failed", Sending, WithFailures},
                                 {"previewing, heard", Previewing, WithAnswers},
                                 {"previewing, cancelled", Previewing, WithFailures},
                                 {"playing, heard", Playing, WithAnswers},
                                 {"playing, cancelled", Playing, WithFailures}});
    }
    void theChatIsNewAgain()
    {
        const auto [moment, ending] = currentRow<Moment, Ending>();
        const auto open = [this] {
            auto screen = std::make_shared<ChatVC>(*m_chat, *m_api, *m_languages);
            screen->userModel = {u"asha"_s, u"Asha"_s, {}, {}};
            m_root->present(screen, Animated::No);
            return screen;
        };
        auto first = open();
        QVERIFY(reach(moment, *first));
        const int requests = network().requestCount();
        first->backAction();
        const std::weak_ptr gone = std::exchange(first, nullptr);
        const auto second = open();
        TRY_VERIFY(gone.expired());
        endEverything(ending, requests);
        QCOMPARE(second->panelState(), ChatVC::PanelState::Idle);
        QVERIFY(second->messageToSend().isEmpty() && !second->voiceChatBtn->isHidden());
        nothingRuns();

        answerAll(); // what the second has asked for, and then asks for
        answerAll();
        QAbstractItemModel &table = *second->chatTableView();
        QCOMPARE(table.rowCount(), 1);
        const int playing = table.roleNames().key("playing");
        const int dimmed = table.roleNames().key("dimmed");
        QVERIFY(!table.index(0, 0).data(playing).toBool() && !table.index(0, 0).data(dimmed).toBool());
    }

    void theHomeScreenIsNewAgain_data()
    {
        using enum Moment;
        using enum Ending;
        addRows<Moment, Ending>({{"signing in, signed in", SigningIn, WithAnswers},
                                 {"signing in, failed", SigningIn, WithFailures},
                                 {"asking for contacts, granted", AskingForContacts, WithAnswers},
                                 {"asking for contacts, refused", AskingForContacts, WithFailures},
                                 {"loading, answered", Loading, WithAnswers},
                                 {"loading, failed", Loading, WithFailures}});
    }
    void theHomeScreenIsNewAgain()
    {
        const auto [moment, ending] = currentRow<Moment, Ending>();
        FakeContactStore &contacts = *m_platform->contactStore;
        contacts.setContacts({{u"Asha"_s, u"Rao"_s, {u"1"_s}}, {u"Ravi"_s, u"Das"_s, {u"2"_s}}});
        contacts.holdReadingAfter(1);
        if (ending == Ending::WithFailures && moment == Moment::AskingForContacts)
            contacts.refuseAccess();
        else if (ending == Ending::WithFailures)
            contacts.failReading(u"lost"_s);
        const long holders = m_platform->contactStore.use_count();
        SocketManager sockets(*m_chat);
        const auto open = [&] {
            auto screen = std::make_shared<HomeVC>(*m_api, *m_languages, sockets);
            m_root->present(screen, Animated::No);
            m_platform->socketWorker->run();
            return screen;
        };
        auto first = open();
        QVERIFY(reach(moment, *first));
        const int requests = network().requestCount();
        const QString user = m_api->currentUserGuestID;
        first->dismiss(Animated::No);
        const std::weak_ptr gone = std::exchange(first, nullptr);
        TRY_VERIFY(gone.expired());
        m_platform->socketWorker->run();
        FakeSocket socket = m_platform->socketWorker->lastSocket();
        QVERIFY(ending == Ending::WithAnswers ? socket.connected() : socket.deliver(websocket::Error{}));
        settle();

        const auto second = open();
        QVERIFY(!socket.isAlive());
        endEverything(ending, requests);
        contacts.letRead();
        TRY_COMPARE(m_platform->contactStore.use_count(), holders);
        settle();
        QCOMPARE(m_api->currentUserGuestID, user);
        QCOMPARE(network().requestCount(), requests);
        QVERIFY(!second->isActivityIndicatorAnimating() && !second->presentedViewController());
        QCOMPARE(second->tableView()->rowCount(), 0);
        nothingRuns();

        second->fetchJWToken([&second] { second->loadData(); });
        answerAll();
        m_platform->socketWorker->run();
        socket = m_platform->socketWorker->lastSocket();
        socket.connected();
        settle();
        m_platform->socketWorker->run();
        QCOMPARE(socket.sent().size(), 1U); // the login
        answerAll();
        QCOMPARE(second->tableView()->rowCount(), 1);
    }

    /// The home screen is the same for both; the former user's chat may even be shown still.
    void theNextUserSeesNothingOfTheOneBefore()
    {
        SocketManager sockets(*m_chat);
        const auto home = std::make_shared<HomeVC>(*m_api, *m_languages, sockets);
        m_root->present(home, Animated::No);
        home->loadData();
        const auto chat = std::make_shared<ChatVC>(*m_chat, *m_api, *m_languages);
        chat->userModel = {u"asha"_s, u"Asha"_s, {}, {}};
        home->present(chat, Animated::No);
        answerAll();
        answerAll();
        QCOMPARE(home->tableView()->rowCount(), 1);
        QCOMPARE(m_chat->aryMessages.size(), 1U);
        m_platform->clock->advance(500ms);
        home->recentsButtonTapped();
        m_chat->openPrivateThread(u"asha"_s);
        m_chat->fetchMessages();
        const int requests = network().requestCount();

        home->fetchJWToken([] {});
        network().answer(requests, 200, answers["POST /api/externalservertp/get-token"]);
        m_answered.insert(requests);
        settle();
        m_chat->openPrivateThread(u"asha"_s); // with the same person as the one before
        const auto nothingIsShown = [&] {
            return home->tableView()->rowCount() == 0 && m_chat->aryMessages.empty() && !m_chat->isThreadKnown();
        };
        QVERIFY(nothingIsShown());
        endEverything(Ending::WithAnswers, requests);
        QVERIFY(nothingIsShown() && !home->isActivityIndicatorAnimating());

        home->recentsButtonTapped();
        answerAll();
        answerAll();
        QCOMPARE(home->tableView()->rowCount(), 1);
        QCOMPARE(m_chat->aryMessages.size(), 1U);
        QVERIFY(m_chat->isThreadKnown());
    }
};

template struct vynlex::InSuite<tst_leaving>;

#include "tst_leaving.moc"

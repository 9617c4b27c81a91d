#include "api/VLApiManager.h"
#include "chat/ChatViewModel.h"
#include "conversation/ConversationTranslateVC.h"
#include "language/LanguageTranslation.h"
#include "screens/ChatVC.h"
#include "tests/fakes/Patience.h"
#include "tests/fakes/Rows.h"
#include "tests/fakes/Suite.h"
#include "tests/fakes/TestPlatform.h"

#include <QTest>

#include <set>

using namespace vynlex;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

using SideState = ConversationTranslateVC::SideState;

/// What a user can be in the middle of when they leave.
enum class Moment { Idle, Listening, Translating, Reading, Opening, Loading, Recorded, Sending, Previewing, Playing };
/// How the services end what they were asked for, once the screen is gone and opened anew.
enum class Ending { WithAnswers, WithFailures };

const QByteArray threadAnswer = R"({"_id":"T1"})";
const QByteArray messages =
    R"({"messages":[{"_id":"m1","threadId":"T1","createdBy":"asha","messageComponent":{"text":"Hello."}}]})";
const QByteArray translation = R"([{"translations":[{"text":"नमस्ते।","to":"hi"}]}])";

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
            const QString path = network().request(i).url.path();
            if (how == Ending::WithFailures)
                network().fail(i, {TransportError::Kind::Io, u"lost"_s});
            else if (path == u"/translate"_s)
                network().answer(i, 200, translation);
            else
                network().answer(i, 200, path.endsWith(u"/messages"_s) ? messages : threadAnswer);
        }
        settle();
    }
    void answerAll() { answerAll(Ending::WithAnswers, network().requestCount()); }

    [[nodiscard]] bool isHeard() const
    {
        return eventually([this] { return speech().recognitionCount() == 1 && microphoneRuns(); });
    }
    [[nodiscard]] bool microphoneRuns() const { return m_platform->audio->lastCapture().isRunning(); }
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
        network().answer(0, 200, threadAnswer);
        m_answered.insert(0);
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
        TRY_VERIFY(!m_platform->audio->lastCapture().isAlive());
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
};

template struct vynlex::InSuite<tst_leaving>;

#include "tst_leaving.moc"

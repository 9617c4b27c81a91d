#include "api/VLApiManager.h"
#include "chat/ChatViewModel.h"
#include "language/LanguageTranslation.h"
#include "platform/ui/ResourceBundle.h"
#include "screens/ChatVC.h"
#include "tests/fakes/CapturedConsole.h"
#include "tests/fakes/Patience.h"
#include "tests/fakes/Rows.h"
#include "tests/fakes/Secrets.h"
#include "tests/fakes/Suite.h"
#include "tests/fakes/TestPlatform.h"

#include <QColor>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSignalSpy>
#include <QTest>

using namespace vynlex;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

using PanelState = ChatVC::PanelState;

namespace {

VLChatMessage incoming(const QString &id, const QString &text)
{
    VLChatMessage message;
    message.id = id;
    message.messageText = text;
    message.isIncomingMessage = true;
    return message;
}

} // namespace

class tst_chat_screen : public QObject {
    Q_OBJECT

    std::unique_ptr<TestPlatform> m_platform;
    std::unique_ptr<VLApiManager> m_api;
    std::unique_ptr<LanguageTranslation> m_languages;
    std::unique_ptr<ChatViewModel> m_model;
    std::shared_ptr<ViewController> m_root; ///< The screen below.
    std::shared_ptr<ChatVC> m_screen;

    [[nodiscard]] FakeSpeechService &speech() const { return *m_platform->speechService; }
    [[nodiscard]] FakeHttpNetwork &backend() const { return *m_platform->network; }
    [[nodiscard]] bool microphoneRuns() const { return m_platform->audio->lastCapture().isRunning(); }
    [[nodiscard]] QAbstractItemModel &table() const { return *m_screen->chatTableView(); }

    [[nodiscard]] QVariant cell(int row, const QByteArray &role) const
    {
        return table().data(table().index(row, 0), table().roleNames().key(role));
    }
    /// Of every row: "P" for the one that is played, "-" for a dimmed one, "o" otherwise.
    [[nodiscard]] QString looks() const
    {
        QString looks;
        for (int row = 0; row < table().rowCount(); ++row)
            looks += cell(row, "playing").toBool() ? u'P' : cell(row, "dimmed").toBool() ? u'-' : u'o';
        return looks;
    }
    [[nodiscard]] auto completedWaves() const
    {
        return m_screen->audioWaveStackView().count(ResourceBundle::image(u"completedAudioWave"_s));
    }

    void openScreen()
    {
        m_root = std::make_shared<ViewController>();
        m_screen = std::make_shared<ChatVC>(*m_model, *m_api, *m_languages);
        m_screen->userModel = {u"asha"_s, u"Asha Rao"_s, {}, u"98765"_s};
        m_root->present(m_screen, Animated::Yes);
    }

    /// The thread "T1", with these messages.
    void answerOpening(const QByteArray &messages = {})
    {
        backend().answer(backend().requestCount() - 1, 200, R"({"_id":"T1"})");
        backend().answer(backend().requestCount() - 1, 200, "{\"messages\":[" + messages + "]}");
        settle();
    }

    void show(std::vector<VLChatMessage> messages)
    {
        m_model->aryMessages = std::move(messages);
        m_screen->refreshChatData();
        settle();
    }

    /// Presses the button and waits until the service and the device have followed.
    [[nodiscard]] bool record() const
    {
        const int recognitions = speech().recognitionCount();
        m_screen->voiceChatAction();
        return eventually([&] { return speech().recognitionCount() == recognitions + 1 && microphoneRuns(); });
    }

    void hear(const QString &piece) const
    {
        QVERIFY(speech().lastRecognition().deliverRecognized(piece));
        settle();
    }

    /// A recording of this length with one piece of text, waiting to be sent.
    [[nodiscard]] bool recorded(std::chrono::seconds length, const QString &piece)
    {
        if (!record())
            return false;
        m_platform->clock->advance(length);
        if (!piece.isEmpty())
            hear(piece);
        m_screen->stopRecordingORsendMessageAction();
        return eventually([&] { return !microphoneRuns(); });
    }

    /// What the last request says.
    [[nodiscard]] QString sentText() const
    {
        return QJsonDocument::fromJson(backend().lastRequest().body)["messageComponent"]["text"].toString();
    }

private slots:
    void initTestCase() { qputenv("TZ", "IST-5:30"); }
    void init()
    {
        m_platform = std::make_unique<TestPlatform>();
        m_api = std::make_unique<VLApiManager>();
        m_api->setCredentials(u"me"_s, secrets::jwt);
        m_api->translatedConfig = VLTranslationConfig(secrets::speechKey, u"testregion"_s, secrets::translationKey);
        m_languages = std::make_unique<LanguageTranslation>(m_platform->userDefaults);
        m_model = std::make_unique<ChatViewModel>(*m_api);
        openScreen();
    }

    void cleanup()
    {
        m_screen.reset();
        m_root.reset();
        // What was begun on other threads ends before the objects that it was given go.
        TRY_VERIFY(!m_platform->audio->lastCapture().isAlive());
    }

    void theScreenOpensTheChatOfItsPerson()
    {
        QCOMPARE(m_screen->headerTitleLabel->text(), u"Asha Rao"_s);
        QCOMPARE(m_screen->initialsImageView().text, u"AR"_s);
        QCOMPARE(m_model->receivedID, u"asha"_s);
        QCOMPARE(m_screen->panelState(), PanelState::Idle);
        QCOMPARE(m_screen->durationLabel->text(), u" 0:00"_s);
        QVERIFY(m_screen->bottomPanelBackgroundView->isHidden() && m_screen->audioPlayButton->isHidden());
        for (const ButtonState *button : m_screen->findChildren<ButtonState *>())
            QVERIFY(!button->currentImage().isEmpty());
        QVERIFY(!m_screen->audioWaveStackView().contains(QUrl()));

        answerOpening(R"({"_id":"m2","threadId":"T1","creatorsName":"Asha","creatorsLName":"Rao"},
                         {"_id":"m1","threadId":"T1","cOn":"2026-01-31T09:15:00.000+0000"})");
        QCOMPARE(table().rowCount(), 2);
        QCOMPARE(cell(0, "time").toString(), u"2:45 PM"_s); // in India
        QCOMPARE(cell(0, "name").toString(), u"You"_s);
        QCOMPARE(cell(0, "bubbleColor").value<QColor>(), QColor(u"#9EB5FA"_s));
        QCOMPARE(cell(0, "playImage").toUrl(), ResourceBundle::image(u"chatSelfPlayButton"_s));
        QCOMPARE(cell(1, "time").toString(), QString());
        QCOMPARE(cell(1, "name").toString(), u"Asha Rao"_s);

        VLChatMessage hers = incoming(u"m3"_s, u"Hello."_s);
        hers.creatorId = u"asha"_s;
        m_model->receiveSocketMessage(hers);
        settle();
        QVERIFY(cell(2, "incoming").toBool() && !cell(1, "incoming").toBool());
        QCOMPARE(cell(2, "name").toString(), u"Asha Rao"_s);
        QCOMPARE(cell(2, "bubbleColor").value<QColor>(), QColor(u"#E7EBF8"_s));
        QCOMPARE(cell(2, "playImage").toUrl(), ResourceBundle::image(u"playButtonForParticipant"_s));
        QVERIFY(!cell(2, "waveImage").toUrl().isEmpty());
    }

    void aMessageIsRecordedPlayedBackAndSent()
    {
        const CapturedConsole console;
        answerOpening(R"({"_id":"m1","threadId":"T1"})");
        const int requests = backend().requestCount();

        QVERIFY(record());
        m_screen->voiceChatAction(); // its button is hidden
        QCOMPARE(m_screen->panelState(), PanelState::Recording);
        QVERIFY(m_screen->voiceChatBtn->isHidden() && m_screen->audioPlayButton->isHidden());
        hear(u"hello there"_s);
        hear({}); // a silence
        m_platform->clock->advance(65s);
        QCOMPARE(m_screen->durationLabel->text(), u" 1:05"_s);
        m_screen->handleMicOrDeleteButtonAction(); // nothing to discard or to play yet
        m_screen->audioPlayButtonAction();
        QCOMPARE(m_screen->panelState(), PanelState::Recording);

        m_screen->stopRecordingORsendMessageAction();
        QCOMPARE(m_screen->panelState(), PanelState::Stopped);
        TRY_VERIFY(!microphoneRuns() && speech().lastRecognition().isInputClosed());
        hear(u"how are you"_s); // the last of what was said is recognised a little later
        QCOMPARE(m_platform->clock->runningTimers(), 0U);
        QVERIFY(m_screen->durationLabel->isHidden() && !m_screen->playDurationLabel->isHidden());
        QCOMPARE(m_screen->playDurationLabel->text(), u" 1:05"_s);
        QVERIFY(m_screen->stopORSendButton->isSelected() && m_screen->micOrDeleteButton->isSelected());
        QCOMPARE(m_screen->playButtonBackStackLook(),
                 (StackLook{20, 1, QColor(u"#B5B5B5"_s), QColor::fromRgbF(1, 1, 1, 0.65F)}));

        m_screen->audioPlayButtonAction();
        TRY_COMPARE(speech().utteranceCount(), 1);
        QCOMPARE(speech().lastUtterance().text(), u" hello there how are you"_s);
        m_platform->clock->advance(10s);
        QCOMPARE(m_screen->playDurationLabel->text(), u" 0:10"_s);
        QVERIFY(speech().lastUtterance().complete());
        TRY_VERIFY(!m_screen->audioPlayButton->isSelected());
        QCOMPARE(m_screen->playDurationLabel->text(), u" 1:05"_s);

        m_screen->stopRecordingORsendMessageAction();
        m_screen->stopRecordingORsendMessageAction(); // does not send it twice
        QCOMPARE(backend().requestCount(), requests + 1);
        QCOMPARE(backend().lastRequest().url.path(), u"/api/chat/thread/T1/messages"_s);
        QCOMPARE(sentText(), u"en-US## hello there how are you"_s);
        QCOMPARE(m_screen->panelState(), PanelState::Stopped);
        backend().answer(requests, 200, R"({"_id":"m2","threadId":"T1","createdBy":"me"})");
        QCOMPARE(m_screen->panelState(), PanelState::Idle);
        QVERIFY(!m_screen->voiceChatBtn->isHidden() && !m_screen->durationLabel->isHidden());
        QVERIFY(m_screen->stopORSendButton->isEnabled() && !m_screen->micOrDeleteButton->isSelected());
        QCOMPARE(m_screen->durationLabel->text(), u" 0:00"_s);
        QCOMPARE(m_screen->playButtonBackStackLook(), StackLook());
        TRY_COMPARE(table().rowCount(), 2);

        m_screen->messageChatAction();
        m_screen->microphoneClickedAction();
        const QStringList lines = console.lines();
        for (const QString &line : {u"voice chat button tapped"_s, u"formatted time :  1:04"_s, u"messageSent"_s,
                                    u"message button tapped"_s, u"microphone tapped"_s})
            QCOMPARE(lines.count(line), 1);
    }

    void onlyWhatTheRecordingHeardIsSent()
    {
        m_languages->store(Side::Speaker, LanguageOption::telugu);
        answerOpening();
        const int requests = backend().requestCount();
        QVERIFY(recorded(2s, u"never mind"_s));
        m_screen->handleMicOrDeleteButtonAction();
        QCOMPARE(m_screen->panelState(), PanelState::Idle);
        m_screen->stopRecordingORsendMessageAction(); // there is no such button now
        hear(u"really"_s);                            // of the recording that was discarded

        QVERIFY(recorded(1s, {}));
        QCOMPARE(m_screen->playDurationLabel->text(), u" 0:01"_s);
        hear({});
        m_screen->stopRecordingORsendMessageAction(); // nothing was recognised
        QCOMPARE(m_screen->panelState(), PanelState::Stopped);
        QCOMPARE(backend().requestCount(), requests);
        hear(u"good morning"_s);
        m_screen->stopRecordingORsendMessageAction();
        QCOMPARE(speech().lastRecognition().settingsAtStart()->recognitionLanguage, u"te-IN"_s);
        QCOMPARE(sentText(), u"te-IN## good morning"_s);
        backend().answer(requests, 500); // and lost
        QCOMPARE(m_screen->panelState(), PanelState::Idle);
        QCOMPARE(table().rowCount(), 0);
    }

    void nothingGoesToAnotherChatsThreadAndNoAnswerToAnotherRecording()
    {
        m_model->receivedID = u"ravi"_s;
        m_model->threadID = u"thread-of-ravi"_s;
        openScreen();
        const int requests = backend().requestCount();
        QVERIFY(recorded(1s, u"for Asha only"_s));
        m_screen->stopRecordingORsendMessageAction();
        QCOMPARE(backend().requestCount(), requests);
        answerOpening();
        m_screen->stopRecordingORsendMessageAction(); // now it is known where to
        QCOMPARE(backend().lastRequest().url.path(), u"/api/chat/thread/T1/messages"_s);
        QCOMPARE(sentText(), u"en-US## for Asha only"_s);

        const int sent = backend().requestCount() - 1;
        m_screen->handleMicOrDeleteButtonAction();
        QVERIFY(record());
        backend().answer(sent, 200, R"({"_id":"m1","threadId":"T1","createdBy":"me"})");
        TRY_COMPARE(table().rowCount(), 1);
        QCOMPARE(m_screen->panelState(), PanelState::Recording);
        hear(u"second"_s);
        m_screen->stopRecordingORsendMessageAction();
        m_screen->stopRecordingORsendMessageAction();
        QCOMPARE(sentText(), u"en-US## second"_s);
    }

    void thePreviewStepsThroughItsWaves_data()
    {
        addRows<int, int>({{"0 s", 0, 50}, {"1 s", 1, 50}, {"7 s", 7, 350}, {"an hour", 3600, 180'000}});
    }
    void thePreviewStepsThroughItsWaves()
    {
        const auto [seconds, intervalMs] = currentRow<int, int>();
        const std::chrono::milliseconds interval(intervalMs);
        QVERIFY(recorded(std::chrono::seconds(seconds), u"hello"_s));
        QCOMPARE(completedWaves(), 0);
        m_screen->audioPlayButtonAction();
        QCOMPARE(completedWaves(), 2); // the first step is taken at once
        m_platform->clock->advance(interval - 1ms);
        QCOMPARE(completedWaves(), 2);
        m_platform->clock->advance(1ms);
        QCOMPARE(completedWaves(), 3);
        TRY_COMPARE(speech().utteranceCount(), 1);

        m_platform->clock->advance(interval * (ChatVC::waveImageCount - 3));
        QCOMPARE(completedWaves(), ChatVC::waveImageCount);
        QVERIFY(m_screen->audioPlayButton->isSelected());
        settle();
        QVERIFY(!m_screen->audioPlayButton->isSelected());
        QVERIFY(speech().lastUtterance().wasStopped());
        QCOMPARE(completedWaves(), 0);
        QCOMPARE(m_platform->clock->runningTimers(), 0U);
    }

    void anEndOfAnEarlierPreviewDoesNotEndTheNext()
    {
        QVERIFY(recorded(1s, u"hello"_s));
        m_screen->audioPlayButtonAction();
        m_platform->clock->advance(1s); // its last wave: the end is on its way
        m_screen->audioPlayButtonAction();
        QVERIFY(!m_screen->audioPlayButton->isSelected());
        m_screen->audioPlayButtonAction();
        settle();
        QVERIFY(m_screen->audioPlayButton->isSelected());
        QCOMPARE(completedWaves(), 2);
        TRY_COMPARE(speech().synthesizerCount(), 2); // that of the first may come late
        TRY_COMPARE(speech().textsBeingSpoken(), QStringList(u" hello"_s));

        m_screen->handleMicOrDeleteButtonAction(); // discarding ends it
        TRY_COMPARE(speech().textsBeingSpoken(), QStringList());
        QVERIFY(!m_screen->audioPlayButton->isSelected());
        QCOMPARE(m_platform->clock->runningTimers(), 0U);
    }

    void aMessageIsReadInTheVoiceOfItsLanguage_data()
    {
        addRows<QString, QString, QString>({
            {"Hindi", u"hi-IN## नमस्ते"_s, u"hi-IN-SwaraNeural"_s, u" नमस्ते"_s},
            {"without a mark", secrets::chatText, u"en-US-AriaNeural"_s, secrets::chatText},
        });
    }
    void aMessageIsReadInTheVoiceOfItsLanguage()
    {
        const auto [messageText, voice, text] = currentRow<QString, QString, QString>();
        const CapturedConsole console;
        m_languages->store(Side::Speaker, LanguageOption::gujarati); // which does not count
        show({incoming(u"m1"_s, u"?"_s), incoming(u"m2"_s, messageText), incoming(u"m3"_s, u"?"_s)});
        QCOMPARE(looks(), u"ooo"_s);
        m_screen->didPressPlayButton(1);
        QCOMPARE(looks(), u"-P-"_s);
        QCOMPARE(cell(1, "playImage").toUrl(), ResourceBundle::image(u"chatAudioPlayButton"_s));
        TRY_COMPARE(speech().utteranceCount(), 1);
        QCOMPARE(speech().lastUtterance().text(), text);
        QCOMPARE(speech().lastUtterance().settings().voiceName, voice);

        m_screen->didPressPlayButton(0); // takes no touches
        m_screen->didSelectRow(2);
        m_screen->didPressPlayButton(3); // nor does what is not there
        QCOMPARE(looks(), u"-P-"_s);
        QSignalSpy changed(&table(), &QAbstractItemModel::dataChanged);
        QVERIFY(speech().lastUtterance().complete());
        TRY_COMPARE(looks(), u"ooo"_s);
        QCOMPARE(changed.count(), 1);
        QCOMPARE(console.lines().count(u"speech synthesis completed"_s), 1);
        QCOMPARE(speech().utteranceCount(), 1);
    }

    void aReadingEnds_data()
    {
        addRows<int>({{"by its button", 0}, {"by its row", 1}, {"when its row is gone", 2}, {"by a recording", 3}});
    }
    void aReadingEnds()
    {
        const auto [by] = currentRow<int>();
        show({incoming(u"m1"_s, u"one"_s), incoming(u"m2"_s, u"two"_s)});
        m_screen->didPressPlayButton(0);
        TRY_COMPARE(speech().utteranceCount(), 1);
        if (by == 0)
            m_screen->didPressPlayButton(0);
        else if (by == 1)
            m_screen->didSelectRow(0);
        else if (by == 2)
            show({incoming(u"m8"_s, u"eight"_s), incoming(u"m9"_s, u"nine"_s)});
        else
            QVERIFY(record());
        QCOMPARE(looks(), u"oo"_s);
        QVERIFY(speech().lastUtterance().wasStopped());
    }

    void aReadingThatFailsEndsUnheard()
    {
        const CapturedConsole console;
        show({incoming(u"m1"_s, u"one"_s), incoming(u"m2"_s, u"two"_s)});
        speech().failNextSynthesizer(u"no loudspeaker"_s);
        m_screen->didPressPlayButton(0);
        QCOMPARE(looks(), u"P-"_s);
        TRY_COMPARE(looks(), u"oo"_s);
        QVERIFY(!console.lines().contains(u"speech synthesis completed"_s));
    }

    void fastPressesLeaveOneReading()
    {
        show({incoming(u"m1"_s, u"one"_s), incoming(u"m2"_s, u"two"_s)});
        for (int presses = 0; presses < 6; ++presses)
            m_screen->didPressPlayButton(0);
        m_screen->didPressPlayButton(1);
        QCOMPARE(looks(), u"-P"_s);
        TRY_COMPARE(speech().synthesizerCount(), 4); // the three that were stopped too
        TRY_COMPARE(speech().textsBeingSpoken(), QStringList(u"two"_s));
        settle(); // whatever the others still had to say
        QCOMPARE(looks(), u"-P"_s);
        m_screen->didPressPlayButton(1);
        QCOMPARE(looks(), u"oo"_s);
        TRY_COMPARE(speech().textsBeingSpoken(), QStringList());
    }

    void theTableInsertsWhatWasAdded()
    {
        show({incoming(u"m1"_s, {}), incoming(u"m2"_s, {})});
        QSignalSpy inserted(&table(), &QAbstractItemModel::rowsInserted);
        QSignalSpy reset(&table(), &QAbstractItemModel::modelReset);
        m_model->aryMessages.push_back(incoming(u"m3"_s, {}));
        QCOMPARE(table().rowCount(), 2); // until it is told
        show(m_model->aryMessages);
        QCOMPARE(inserted.count(), 1);
        QCOMPARE(inserted[0][1].toInt(), 2);
        show(m_model->aryMessages);
        QCOMPARE(inserted.count(), 1);
        QCOMPARE(reset.count(), 0);

        show({incoming(u"m2"_s, {}), incoming(u"m3"_s, {}), incoming(u"m4"_s, {})}); // the page moved on
        QCOMPARE(reset.count(), 1);
        m_model->aryMessages.pop_back();
        QVERIFY(!cell(2, "name").isValid()); // no more messages than rows
        show({});
        QCOMPARE(reset.count(), 2);
        QCOMPARE(table().rowCount(), 0);
    }

    void aDismissalByTheHostEndsEverything()
    {
        show({incoming(u"m1"_s, u"one"_s)});
        QVERIFY(record());
        m_screen->didPressPlayButton(0);
        TRY_COMPARE(speech().utteranceCount(), 1);
        m_root->dismiss(Animated::No);
        m_screen->refreshChatData(); // on its way when the screen goes
        m_screen.reset();
        TRY_VERIFY(m_model->delegate.expired() && !microphoneRuns());
        QVERIFY(speech().lastUtterance().wasStopped());
        QCOMPARE(m_platform->clock->runningTimers(), 0U);
    }
};

template struct vynlex::InSuite<tst_chat_screen>;

SUITE_MAIN(QCoreApplication)

#include "tst_chat_screen.moc"

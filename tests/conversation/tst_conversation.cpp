#include "api/VLApiManager.h"
#include "conversation/ConversationTranslateVC.h"
#include "conversation/TranslateInfoViewController.h"
#include "conversation/TranslationStoryboard.h"
#include "language/LanguageTranslation.h"
#include "platform/ui/AlertController.h"
#include "platform/ui/ResourceBundle.h"
#include "tests/fakes/CapturedConsole.h"
#include "tests/fakes/Patience.h"
#include "tests/fakes/Secrets.h"
#include "tests/fakes/Suite.h"
#include "tests/fakes/TestPlatform.h"

#include <QRegularExpression>
#include <QSignalSpy>
#include <QTest>

using namespace vynlex;
using namespace Qt::StringLiterals;

using SideState = ConversationTranslateVC::SideState;

namespace {

const QString englishPrompt = u"Press mic to begin conversation"_s;
const QString hindiPrompt = u"बातचीत शुरू करने के लिए माइक दबाएं"_s;
const QString teluguPrompt = u"సంభాషణను ప్రారంభించడానికి మైక్ నొక్కండి"_s;

QByteArray translated(const QString &text)
{
    return u"[{\"translations\":[{\"text\":\"%1\",\"to\":\"xx\"}]}]"_s.arg(text).toUtf8();
}

} // namespace

class tst_conversation : public QObject {
    Q_OBJECT

    std::unique_ptr<TestPlatform> m_platform;
    std::unique_ptr<VLApiManager> m_api;
    std::unique_ptr<LanguageTranslation> m_languages;
    std::shared_ptr<ViewController> m_root; ///< The screen below.
    std::shared_ptr<ConversationTranslateVC> m_screen;

    [[nodiscard]] FakeSpeechService &speech() const { return *m_platform->speechService; }
    [[nodiscard]] FakeHttpNetwork &translator() const { return *m_platform->network; }
    [[nodiscard]] bool microphoneRuns() const { return m_platform->audio->lastCapture().isRunning(); }

    void openScreen()
    {
        m_screen = std::make_shared<ConversationTranslateVC>(*m_api, *m_languages);
        m_root->present(m_screen, Animated::Yes);
    }

    void press(Side side) const
    {
        if (side == Side::Speaker)
            m_screen->didPressSpeakerButtonAction();
        else
            m_screen->didPressListenerButtonAction();
    }

    /// Presses a microphone and waits until the service and the device have followed.
    [[nodiscard]] bool listen(Side side) const
    {
        const int recognitions = speech().recognitionCount();
        press(side);
        return eventually([&] { return speech().recognitionCount() == recognitions + 1 && microphoneRuns(); });
    }

    /// One side says something, and it is recognised.
    [[nodiscard]] bool say(Side side, const QString &text) const
    {
        if (!listen(side) || !speech().lastRecognition().deliverRecognized(text))
            return false;
        const ButtonState &button = side == Side::Speaker ? *m_screen->speakerMicButton : *m_screen->listenerMicButton;
        return eventually([&] { return !button.isSelected() && !microphoneRuns(); });
    }

private slots:
    void init()
    {
        m_platform = std::make_unique<TestPlatform>();
        m_api = std::make_unique<VLApiManager>();
        m_api->translatedConfig = VLTranslationConfig(secrets::speechKey, u"testregion"_s, secrets::translationKey);
        m_languages = std::make_unique<LanguageTranslation>(m_platform->userDefaults);
        m_root = std::make_shared<ViewController>();
        openScreen();
    }

    void cleanup()
    {
        m_screen.reset();
        m_root.reset();
        // What was begun on other threads ends before the objects that it was given go.
        TRY_VERIFY(!m_platform->audio->lastCapture().isAlive());
    }

    void aFreshInstallationShowsEnglishAndHindiPrompts()
    {
        QCOMPARE(m_screen->speakerLanguageLabel->text(), u"English"_s);
        QCOMPARE(m_screen->listenerLanguageLabel->text(), u"हिंदी"_s);
        QCOMPARE(m_screen->speakerLabel->text(), englishPrompt);
        QCOMPARE(m_screen->listenerLabel->text(), hindiPrompt);
        QVERIFY(m_screen->speakerShowsPrompt() && m_screen->listenerShowsPrompt());
        QVERIFY(m_screen->speakerTextToSpeachButton->isHidden() && m_screen->listenerTextToSpeachButton->isHidden());
        QCOMPARE(m_screen->speakerState(), SideState::Idle);
        for (const ButtonState *button : m_screen->findChildren<ButtonState *>())
            QVERIFY(!button->currentImage().isEmpty());
        for (ButtonState *button : {m_screen->speakerMicButton, m_screen->listenerMicButton,
                                    m_screen->speakerTextToSpeachButton, m_screen->listenerTextToSpeachButton}) {
            const bool isMicrophone = !button->isHidden();
            QCOMPARE(button->currentImage(), ResourceBundle::image(isMicrophone ? u"micButton"_s : u"playButton"_s));
            button->setSelected(true);
            QCOMPARE(button->currentImage(),
                     ResourceBundle::image(isMicrophone ? u"micStopButton"_s : u"pauseButton"_s));
            button->setSelected(false);
        }
    }

    void twoPeopleConverse()
    {
        const CapturedConsole console;

        // The speaker presses the microphone.
        QVERIFY(listen(Side::Speaker));
        QCOMPARE(m_screen->speakerState(), SideState::Listening);
        QCOMPARE(m_screen->listenerState(), SideState::Idle);
        QVERIFY(m_screen->speakerMicButton->isEnabled() && !m_screen->listenerMicButton->isEnabled());
        QCOMPARE(m_screen->speakerLabel->text(), QString());
        QCOMPARE(m_screen->listenerLabel->text(), QString());
        FakeRecognition english = speech().lastRecognition();
        QCOMPARE(english.settingsAtStart()->recognitionLanguage, u"en-US"_s);
        press(Side::Listener); // a disabled button is not pressed
        QVERIFY(!m_screen->listenerMicButton->isSelected());

        // What they say is recognised, shown and translated.
        QVERIFY(english.deliverRecognized(u"Hello."_s));
        TRY_COMPARE(translator().requestCount(), 1);
        QCOMPARE(m_screen->speakerState(), SideState::Busy);
        QCOMPARE(m_screen->listenerState(), SideState::Busy);
        QVERIFY(m_screen->speakerMicButton->isEnabled() && m_screen->listenerMicButton->isEnabled());
        QCOMPARE(m_screen->speakerLabel->text(), u"Hello."_s);
        QCOMPARE(m_screen->listenerLabel->text(), QString());
        QVERIFY(!m_screen->speakerTextToSpeachButton->isHidden());
        QVERIFY(m_screen->listenerTextToSpeachButton->isHidden());
        TRY_VERIFY(!microphoneRuns() && english.isInputClosed());
        QCOMPARE(translator().request(0).body, QByteArray(R"([{"Text":"Hello."}])"));
        QVERIFY(translator().request(0).url.query().endsWith(u"to=hi"_s));

        // The translation appears opposite, and both texts can be read aloud.
        translator().answer(0, 200, translated(u"नमस्ते।"_s));
        QCOMPARE(m_screen->listenerLabel->text(), u"नमस्ते।"_s);
        QVERIFY(m_screen->speakerState() == SideState::Idle && m_screen->listenerState() == SideState::Idle);
        QVERIFY(!m_screen->speakerTextToSpeachButton->isHidden() && !m_screen->listenerTextToSpeachButton->isHidden());

        // The listener has it read.
        m_screen->didPressListenerSideTextToSpeachButtonAction();
        QCOMPARE(m_screen->listenerState(), SideState::Speaking);
        TRY_COMPARE(speech().utteranceCount(), 1);
        QCOMPARE(speech().lastUtterance().settings().voiceName, u"hi-IN-SwaraNeural"_s);
        QVERIFY(speech().lastUtterance().complete());
        TRY_COMPARE(m_screen->listenerState(), SideState::Idle);

        // And answers.
        QVERIFY(listen(Side::Listener));
        QCOMPARE(speech().lastRecognition().settingsAtStart()->recognitionLanguage, u"hi-IN"_s);
        QVERIFY(!m_screen->speakerMicButton->isEnabled());
        QVERIFY(m_screen->speakerTextToSpeachButton->isHidden() && m_screen->listenerTextToSpeachButton->isHidden());
        QVERIFY(speech().lastRecognition().deliverRecognized(u"आप कैसे हैं?"_s));
        TRY_COMPARE(translator().requestCount(), 2);
        QVERIFY(translator().request(1).url.query().endsWith(u"to=en"_s));
        translator().answer(1, 200, translated(u"How are you?"_s));
        QCOMPARE(m_screen->listenerLabel->text(), u"आप कैसे हैं?"_s);
        QCOMPARE(m_screen->speakerLabel->text(), u"How are you?"_s);

        const QStringList lines = console.lines();
        for (const QString &line : {u"Final recognition result: Hello."_s, u"नमस्ते।"_s, u"completedSynthesizer"_s,
                                    u"Final recognition result: आप कैसे हैं?"_s, u"How are you?"_s})
            QCOMPARE(lines.count(line), 1);
    }

    void nothingRecognisedOrThePromptItselfIsNotTranslated()
    {
        QVERIFY(say(Side::Listener, {}));
        QCOMPARE(m_screen->speakerLabel->text(), englishPrompt);
        QCOMPARE(m_screen->listenerLabel->text(), hindiPrompt);
        QVERIFY(m_screen->speakerTextToSpeachButton->isHidden() && m_screen->listenerTextToSpeachButton->isHidden());
        QVERIFY(m_screen->speakerMicButton->isEnabled() && m_screen->listenerMicButton->isEnabled());

        QVERIFY(say(Side::Speaker, englishPrompt));
        QCOMPARE(m_screen->speakerLabel->text(), englishPrompt);
        QCOMPARE(m_screen->listenerLabel->text(), QString());
        QVERIFY(m_screen->speakerTextToSpeachButton->isHidden());
        QCOMPARE(translator().requestCount(), 0);
    }

    void theSilenceAfterASentenceDoesNotWipeIt()
    {
        QVERIFY(say(Side::Speaker, u"Hello."_s));
        QVERIFY(speech().lastRecognition().deliverRecognized(QString()));
        QVERIFY(speech().lastRecognition().deliverRecognized(u"Good morning."_s)); // a second sentence counts
        TRY_COMPARE(m_screen->speakerLabel->text(), u"Good morning."_s);
        QCOMPARE(translator().requestCount(), 2);
    }

    void aSecondPressEndsTheListening()
    {
        QVERIFY(listen(Side::Speaker));
        press(Side::Speaker);
        QCOMPARE(m_screen->speakerState(), SideState::Idle);
        QVERIFY(m_screen->listenerMicButton->isEnabled());
        TRY_VERIFY(!microphoneRuns() && speech().lastRecognition().isInputClosed());

        // What was said before the press is still shown.
        QVERIFY(speech().lastRecognition().deliverRecognized(u"Thank you."_s));
        TRY_COMPARE(m_screen->speakerLabel->text(), u"Thank you."_s);
        QCOMPARE(translator().requestCount(), 1);
    }

    void fastPressesLeaveNoMicrophoneRunning()
    {
        for (int presses = 0; presses < 8; ++presses)
            press(Side::Speaker);
        QCOMPARE(m_screen->speakerState(), SideState::Idle);
        TRY_COMPARE(speech().recognitionCount(), 4);
        TRY_VERIFY(speech().lastRecognition().isInputClosed());
        TRY_VERIFY(!microphoneRuns());
        QVERIFY(say(Side::Speaker, u"Hello."_s)); // and the next press works
    }

    void aCancelledRecognitionLeavesTheScreenUnaware()
    {
        const CapturedConsole console;
        QVERIFY(listen(Side::Speaker));
        QVERIFY(speech().lastRecognition().deliverCanceled(
            {CancellationReason::Error, CancellationErrorCode::AuthenticationFailure, u"wrong key"_s}));
        TRY_VERIFY(console.lines().contains(u"Recognition canceled: wrong key"_s));
        QCOMPARE(m_screen->speakerState(), SideState::Listening);

        press(Side::Speaker);
        QCOMPARE(m_screen->speakerState(), SideState::Idle);
        QVERIFY(say(Side::Speaker, u"Hello."_s));
    }

    void aResultOfAReplacedListeningIsLate()
    {
        QVERIFY(listen(Side::Speaker));
        press(Side::Speaker);
        // The result is on its way to the main queue when the listener presses.
        FakeRecognition first = speech().lastRecognition();
        QVERIFY(first.deliverRecognized(u"Hello."_s));
        QVERIFY(listen(Side::Listener));
        QCoreApplication::processEvents();
        QCOMPARE(m_screen->listenerState(), SideState::Listening);
        QVERIFY(microphoneRuns());
        QCOMPARE(m_screen->speakerLabel->text(), QString());
        QVERIFY(!first.deliverRecognized(u"Hello again."_s)); // replaced, so gone
    }

    void aFailedTranslationIsAConsoleLine()
    {
        const CapturedConsole console;
        QVERIFY(say(Side::Speaker, u"He said \"hello\""_s));
        translator().fail(0, {TransportError::Kind::Timeout, u"no answer"_s});
        QVERIFY(say(Side::Speaker, u"He said \"hello\""_s));
        translator().answer(1, 400, R"({"error":{"code":400074}})");
        const QStringList errors = console.lines().filter(QRegularExpression(u"^Error: "_s));
        QCOMPARE(errors.size(), 2);
        QVERIFY(errors.first().startsWith(u"Error: no answer"_s));
        QCOMPARE(m_screen->speakerLabel->text(), u"He said \"hello\""_s);
        QCOMPARE(m_screen->listenerLabel->text(), QString());
        QVERIFY(m_screen->listenerTextToSpeachButton->isHidden());
        QCOMPARE(m_screen->speakerState(), SideState::Idle);
    }

    void theBusyLookEndsWhenNobodyAnswers()
    {
        QSignalSpy looks(m_screen.get(), &ConversationTranslateVC::listenerLookChanged);
        QVERIFY(say(Side::Speaker, u"Hello."_s));
        translator().answer(0, 200, R"([{"translations":[]}])"); // an answer without a translation
        QCOMPARE(m_screen->listenerState(), SideState::Busy);
        looks.clear();
        m_platform->clock->advance(ConversationTranslateVC::longestBusyLook);
        QCOMPARE(m_screen->listenerState(), SideState::Idle);
        QCOMPARE(looks.count(), 1);
    }

    void aTranslationMayComeWhileTheNextSentenceIsHeard()
    {
        QVERIFY(say(Side::Speaker, u"Hello."_s));
        QVERIFY(listen(Side::Listener));
        QCOMPARE(m_screen->speakerState(), SideState::Idle); // listening ends the busy look
        translator().answer(0, 200, translated(u"नमस्ते।"_s));
        QCOMPARE(m_screen->listenerLabel->text(), u"नमस्ते।"_s);
        QCOMPARE(m_screen->listenerState(), SideState::Listening);

        // An earlier answer does not end the wait for a later one.
        QVERIFY(speech().lastRecognition().deliverRecognized(u"आप कैसे हैं?"_s));
        TRY_COMPARE(translator().requestCount(), 2);
        QVERIFY(say(Side::Speaker, u"Thank you."_s));
        translator().answer(1, 200, translated(u"How are you?"_s));
        QCOMPARE(m_screen->speakerState(), SideState::Busy);
        translator().answer(2, 200, translated(u"धन्यवाद।"_s));
        QCOMPARE(m_screen->speakerState(), SideState::Idle);
    }

    void readingAPromptAlerts()
    {
        m_screen->didPressListenerSideTextToSpeachButtonAction();
        const auto alert = std::dynamic_pointer_cast<AlertController>(m_screen->presentedViewController());
        QVERIFY(alert);
        QCOMPARE(alert->title(), u"Alert"_s);
        QCOMPARE(alert->message(), hindiPrompt);
        QCOMPARE(alert->actionTitles(), QStringList(u"Ok"_s));
        QVERIFY(!m_screen->listenerTextToSpeachButton->isSelected());
        alert->didPressAction(0);
        QVERIFY(!m_screen->presentedViewController());
        QCOMPARE(speech().utteranceCount(), 0);
    }

    void aSecondPressStopsTheReader()
    {
        QVERIFY(say(Side::Speaker, u"Hello."_s));
        m_screen->didPressSpeakerSideTextToSpeachButtonAction();
        TRY_COMPARE(speech().utteranceCount(), 1);
        QCOMPARE(speech().lastUtterance().settings().voiceName, u"en-US-AriaNeural"_s);
        m_screen->didPressSpeakerSideTextToSpeachButtonAction();
        QVERIFY(!m_screen->speakerTextToSpeachButton->isSelected());
        QVERIFY(speech().lastUtterance().wasStopped());
        TRY_VERIFY(!speech().lastUtterance().isSpeaking());

        const CapturedConsole console;
        m_screen->didPressSpeakerSideTextToSpeachButtonAction();
        TRY_COMPARE(speech().utteranceCount(), 2);
        speech().failNextStopSpeaking(u"no device"_s);
        m_screen->didPressSpeakerSideTextToSpeachButtonAction();
        QVERIFY(console.lines().contains(u"Error creating speech synthesizer: no device"_s));
        QVERIFY(!m_screen->speakerTextToSpeachButton->isSelected());
        speech().lastUtterance().complete();
    }

    void theEndOfOneReadingDoesNotEndTheNext()
    {
        QVERIFY(say(Side::Speaker, u"Hello."_s));
        m_screen->didPressSpeakerSideTextToSpeachButtonAction();
        TRY_COMPARE(speech().utteranceCount(), 1);
        speech().lastUtterance().complete(); // on its way to the main thread while the button is pressed twice
        m_screen->didPressSpeakerSideTextToSpeachButtonAction();
        m_screen->didPressSpeakerSideTextToSpeachButtonAction();
        TRY_COMPARE(speech().utteranceCount(), 2);
        QVERIFY(m_screen->speakerTextToSpeachButton->isSelected());
        speech().lastUtterance().complete();
        TRY_VERIFY(!m_screen->speakerTextToSpeachButton->isSelected());
    }

    void aReaderThatFailsIsPressedAgain()
    {
        QVERIFY(say(Side::Speaker, u"Hello."_s));
        const CapturedConsole console;
        speech().failNextSynthesizer(u"no loudspeaker"_s);
        m_screen->didPressSpeakerSideTextToSpeachButtonAction();
        TRY_VERIFY(console.lines().contains(u"Error creating speech synthesizer: no loudspeaker"_s));
        QVERIFY(m_screen->speakerTextToSpeachButton->isSelected()); // nobody reports a completion
        m_screen->didPressSpeakerSideTextToSpeachButtonAction();
        m_screen->didPressSpeakerSideTextToSpeachButtonAction();
        TRY_COMPARE(speech().utteranceCount(), 1);
        QVERIFY(speech().lastUtterance().complete());
        TRY_VERIFY(!m_screen->speakerTextToSpeachButton->isSelected());
    }

    void aChipOpensThePickerForItsSide()
    {
        m_screen->listenerLanguageBackView->tap();
        LanguageSelectionView *const picker = m_screen->languageSelectionView();
        QVERIFY(picker && picker->isShown());
        QVERIFY(!picker->isFromSpeaker);
        QCOMPARE(picker->selectedLanguage, LanguageOption::hindi);

        picker->didSelectRow(5);
        QCOMPARE(m_screen->listenerLanguageLabel->text(), u"తెలుగు"_s);
        QCOMPARE(m_screen->listenerLabel->text(), teluguPrompt);
        QVERIFY(m_screen->listenerShowsPrompt());
        QCOMPARE(m_screen->speakerLabel->text(), englishPrompt);
        QCOMPARE(m_languages->language(Side::Listener), LanguageOption::telugu);

        bool gone = false;
        connect(picker, &QObject::destroyed, this, [&] { gone = true; });
        picker->didPressCloseButtonAction();
        m_screen->speakerLanguageBackView->tap(); // the next one, before the first has slid out
        QVERIFY(m_screen->languageSelectionView() != picker);
        QVERIFY(m_screen->languageSelectionView()->isFromSpeaker);
        TRY_VERIFY(gone);
        m_screen->languageSelectionView()->hide();
        m_platform->clock->advance(spring::duration);
        QVERIFY(!m_screen->languageSelectionView());
    }

    void aTextThatWasSaidStaysWhenItsLanguageChanges()
    {
        QVERIFY(say(Side::Speaker, u"Hello."_s));
        m_screen->speakerLanguageBackView->tap();
        m_screen->languageSelectionView()->didSelectRow(2);
        QCOMPARE(m_screen->speakerLabel->text(), u"Hello."_s);
        QCOMPARE(m_screen->speakerLanguageLabel->text(), u"ગુજરાતી"_s);
        QVERIFY(listen(Side::Speaker)); // the next listening is in the new language
        QCOMPARE(speech().lastRecognition().settingsAtStart()->recognitionLanguage, u"gu-IN"_s);
    }

    void swappingExchangesLanguagesAndTexts()
    {
        m_screen->didPressConversionButtonAction();
        QCOMPARE(m_languages->language(Side::Speaker), LanguageOption::hindi);
        QCOMPARE(m_languages->language(Side::Listener), LanguageOption::english);
        QCOMPARE(m_screen->speakerLanguageLabel->text(), u"हिंदी"_s);
        QCOMPARE(m_screen->listenerLanguageLabel->text(), u"English"_s);
        QCOMPARE(m_screen->speakerLabel->text(), hindiPrompt);
        QVERIFY(m_screen->speakerShowsPrompt() && m_screen->listenerShowsPrompt());

        // With one text only, the side that has it now can have it read.
        QVERIFY(say(Side::Speaker, u"नमस्ते।"_s));
        m_screen->didPressConversionButtonAction();
        QCOMPARE(m_screen->listenerLabel->text(), u"नमस्ते।"_s);
        QVERIFY(m_screen->speakerTextToSpeachButton->isHidden());
        QVERIFY(!m_screen->listenerTextToSpeachButton->isHidden());
    }

    void whatIsReadAloudIsReadToItsEndAfterTheScreenIsGone()
    {
        QVERIFY(say(Side::Speaker, u"Hello."_s));
        m_screen->didPressSpeakerSideTextToSpeachButtonAction();
        TRY_COMPARE(speech().utteranceCount(), 1);
        std::weak_ptr<ConversationTranslateVC> gone = m_screen;
        m_screen->didPressBackButtonAction();
        m_screen.reset();
        TRY_VERIFY(gone.expired());
        QVERIFY(speech().lastUtterance().complete());
        TRY_VERIFY(!speech().lastUtterance().isSpeaking());
    }
};

template struct vynlex::InSuite<tst_conversation>;

SUITE_MAIN(QCoreApplication)

#include "tst_conversation.moc"

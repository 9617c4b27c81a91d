#include <QtTest>

#include <atomic>
#include <thread>

#include "api/VLApiManager.h"
#include "language/LanguageTranslation.h"
#include "tests/fakes/CapturedConsole.h"
#include "tests/fakes/Patience.h"
#include "tests/fakes/TestPlatform.h"
#include "translation/TextToSpeachViewModel.h"

using namespace Qt::StringLiterals;
using namespace vynlex;

class TestTextToSpeach : public QObject {
    Q_OBJECT

private slots:
    void init()
    {
        m_platform = std::make_unique<TestPlatform>();
        m_apiManager = std::make_unique<VLApiManager>();
        m_apiManager->translatedConfig = VLTranslationConfig(u"speech-key"_s, u"centralindia"_s, u"text"_s);
        m_languages = std::make_unique<LanguageTranslation>(m_platform->userDefaults);
        m_model = std::make_unique<TextToSpeachViewModel>(*m_apiManager, *m_languages);
        m_completed = 0;
    }

    void theVoiceIsThatOfTheSideUnlessOneIsNamed_data()
    {
        QTest::addColumn<bool>("isSpeaker");
        QTest::addColumn<QString>("voiceName");
        QTest::addColumn<QString>("spoken");
        QTest::newRow("speaker") << true << QString() << "en-US-AriaNeural";
        QTest::newRow("listener") << false << QString() << "hi-IN-SwaraNeural";
        QTest::newRow("named") << true << "te-IN-ShrutiNeural"
                               << "te-IN-ShrutiNeural";
    }
    void theVoiceIsThatOfTheSideUnlessOneIsNamed()
    {
        QFETCH(const bool, isSpeaker);
        QFETCH(const QString, voiceName);
        m_platform->speechService->setSpeaking(FakeSpeechService::Speaking::CompletesAtOnce);
        const CapturedConsole console;
        speak(u"Hello."_s, isSpeaker, voiceName);
        const FakeUtterance utterance = m_platform->speechService->lastUtterance();
        QCOMPARE(utterance.text(), u"Hello."_s);
        QTEST(utterance.settings().voiceName, "spoken");
        QCOMPARE(utterance.settings().key, u"speech-key"_s);
        QCOMPARE(m_platform->audio->setCategoryCount(), 1);
        QVERIFY(m_platform->audio->isSessionActive());
        QCOMPARE(m_completed.load(), 1);
        QCOMPARE(console.lines(), QStringList{u"completedSynthesizer"_s});
    }

    void anEmptyTextPreparesEverythingAndSpeaksNothing()
    {
        speak({});
        QCOMPARE(m_platform->audio->setActiveCount(), 1);
        QCOMPARE(m_platform->speechService->synthesizerCount(), 1);
        QCOMPARE(m_platform->speechService->utteranceCount(), 0);
        QCOMPARE(m_completed.load(), 0);
    }

    void everyFailureIsItsLineAndNothingElse()
    {
        FakeSpeechService &service = *m_platform->speechService;
        const CapturedConsole console;
        service.failNextSynthesizer(u"no loudspeaker"_s);
        speak(u"a"_s);
        service.failNextSpeakText(u"taken away"_s);
        speak(u"a"_s);
        service.cancelNextSpeakText(
            {CancellationReason::Error, CancellationErrorCode::AuthenticationFailure, u"wrong key"_s});
        speak(u"a"_s);
        m_platform->audio->failNextSetCategory(u"busy"_s);
        speak({});
        m_platform->audio->failNextSetActive(u"in a call"_s);
        speak({});
        QCOMPARE(console.lines(), (QStringList{u"Error creating speech synthesizer: no loudspeaker"_s,
                                               u"Error during speech synthesis: taken away"_s,
                                               u"Speech synthesis cancelled, detail: wrong key "_s,
                                               u"Error setting audio session category: busy"_s,
                                               u"Error setting audio session category: in a call"_s}));
        QCOMPARE(m_completed.load(), 0);
    }

    void withoutKeysNoConfigurationCanBeMade()
    {
        const VLApiManager withoutKeys;
        TextToSpeachViewModel model(withoutKeys, *m_languages);
        const CapturedConsole console;
        model.speakText(u"a"_s, true, {}, [] {});
        QCOMPARE(console.lines().size(), 1);
        QVERIFY(console.lines().front().startsWith(u"Error creating speech configuration: "_s));
    }

    void stoppingReleasesTheSpeakingThread()
    {
        m_model->stopSpeaking(); // nothing is spoken: fine
        const CapturedConsole console;
        std::thread speaking([this] { m_model->speakText(u"a long text"_s, true, {}, [] {}); });
        TRY_VERIFY(m_platform->speechService->utteranceCount() == 1 &&
                   m_platform->speechService->lastUtterance().isSpeaking());
        m_platform->speechService->failNextStopSpeaking(u"not now"_s);
        m_model->stopSpeaking();
        m_model->stopSpeaking();
        speaking.join();
        QVERIFY(m_platform->speechService->lastUtterance().wasStopped());
        QCOMPARE(console.lines(), (QStringList{u"Error creating speech synthesizer: not now"_s,
                                               u"Speech synthesis cancelled, detail:  "_s}));
    }

private:
    /// As the screens do it: on a thread that may be blocked.
    void speak(const QString &text, bool isSpeaker = true, const QString &voiceName = {})
    {
        std::thread([&] { m_model->speakText(text, isSpeaker, voiceName, [this] { ++m_completed; }); }).join();
    }

    std::unique_ptr<TestPlatform> m_platform;
    std::unique_ptr<VLApiManager> m_apiManager;
    std::unique_ptr<LanguageTranslation> m_languages;
    std::unique_ptr<TextToSpeachViewModel> m_model;
    std::atomic<int> m_completed = 0;
};

QTEST_GUILESS_MAIN(TestTextToSpeach)
#include "tst_text_to_speach.moc"

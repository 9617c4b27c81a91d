#include <QtTest>

#include <limits>

#include "api/VLApiManager.h"
#include "language/LanguageTranslation.h"
#include "tests/fakes/CapturedConsole.h"
#include "tests/fakes/Patience.h"
#include "tests/fakes/TestPlatform.h"
#include "translation/SpeachToTextViewModel.h"

using namespace Qt::StringLiterals;
using namespace vynlex;

class TestSpeachToText : public QObject {
    Q_OBJECT

private slots:
    void init()
    {
        m_platform = std::make_unique<TestPlatform>();
        m_apiManager = std::make_unique<VLApiManager>();
        m_apiManager->translatedConfig = VLTranslationConfig(u"speech-key"_s, u"centralindia"_s, u"text"_s);
        m_languages = std::make_unique<LanguageTranslation>(m_platform->userDefaults);
        m_model = std::make_shared<SpeachToTextViewModel>(*m_apiManager, *m_languages);
        m_results.clear();
    }

    void aSentenceGoesFromTheMicrophoneToItsOwner()
    {
        start(true);
        TRY_VERIFY(listens());
        QCOMPARE(recognition().settingsAtStart(),
                 (SpeechSettings{u"speech-key"_s, u"centralindia"_s, u"en-US"_s, {}, true}));
        QCOMPARE(capture().tapFrames(), 2048);

        // 2048 frames at 48 kHz are 42.7 ms: 682 frames of the service's rate, 16 bits each
        QVERIFY(capture().hear(capture().silence()));
        TRY_COMPARE(recognition().audio().size(), 682 * 2);

        const CapturedConsole console;
        recognition().deliverRecognized(u"Hello."_s, Ticks(12'345'678));
        TRY_COMPARE(m_results, (QList<Result>{{u"Hello."_s, 12'345'678}}));
        QCOMPARE(console.lines(), QStringList{u"Final recognition result: Hello."_s});

        m_model->stopSpeechRecognition();
        TRY_VERIFY(recognition().isInputClosed());
        QVERIFY(!capture().isRunning());
        QVERIFY(!capture().hasTap());
    }

    void theSideChoosesTheLanguage()
    {
        m_languages->store(Side::Listener, LanguageOption::telugu);
        start(false);
        TRY_VERIFY(listens());
        QCOMPARE(recognition().settingsAtStart()->recognitionLanguage, u"te-IN"_s);
    }

    void aResultWithoutTextIsAnEmptyText()
    {
        start(true);
        TRY_VERIFY(listens());
        const CapturedConsole console;
        recognition().deliverRecognized(SpeechRecognitionResult{});
        TRY_COMPARE(m_results, (QList<Result>{{QString(), 0}}));
        QCOMPARE(console.lines(), QStringList{u"Final recognition result: (no result)"_s});
    }

    void aCancellationIsAConsoleLineOnly_data()
    {
        QTest::addColumn<QString>("details");
        QTest::addColumn<QString>("line");
        QTest::newRow("with details") << u"Authentication error (401)"_s
                                      << u"Recognition canceled: Authentication error (401)"_s;
        QTest::newRow("without") << QString() << u"Recognition canceled: (no result)"_s;
    }
    void aCancellationIsAConsoleLineOnly()
    {
        QFETCH(const QString, details);
        QFETCH(const QString, line);
        start(true);
        TRY_VERIFY(listens());
        const CapturedConsole console;
        recognition().deliverCanceled({CancellationReason::Error, CancellationErrorCode::NoError, details});
        TRY_COMPARE(console.lines(), QStringList{line});
        QCoreApplication::processEvents();
        QVERIFY(m_results.isEmpty());
    }

    void aStopRightAfterAStartLeavesNoMicrophoneRunning()
    {
        for (int i = 0; i < 50; ++i) {
            start(true);
            m_model->stopSpeechRecognition();
        }
        start(false);
        m_model->stopSpeechRecognition();
        TRY_COMPARE(capture().stopCount(), 51);
        QVERIFY(!capture().isRunning());
        QVERIFY(!capture().hasTap());
        QVERIFY(recognition().isInputClosed());
    }

    void startingAgainReplacesTheRecogniserAndTheTap()
    {
        start(true);
        TRY_VERIFY(listens());
        const FakeRecognition first = recognition();
        start(false);
        TRY_COMPARE(m_platform->speechService->recognitionCount(), 2);
        TRY_COMPARE(capture().installTapCount(), 2);
        QVERIFY(!first.isAlive());
        QVERIFY(capture().removeTapCount() >= 2); // before each installation
        TRY_VERIFY(capture().hear(capture().silence()));
        TRY_VERIFY(!recognition().audio().isEmpty());
    }

    void aFailedStartIsSaidAndTheMicrophoneStartsRegardless()
    {
        const CapturedConsole console;
        m_platform->speechService->failNextStart(u"no start"_s);
        m_platform->audio->failNextEngineStart(u"no microphone"_s);
        start(true);
        TRY_COMPARE(console.lines(),
                    (QStringList{u"Error starting continuous recognition: no start"_s, u"no microphone"_s}));
    }

    void withoutAMicrophoneRecognitionWaitsInSilence()
    {
        const CapturedConsole console;
        m_platform->audio->setInputFormat({0, 1, AudioFormat::SampleType::Float32});
        start(true);
        TRY_VERIFY(m_platform->speechService->recognitionCount() == 1 && recognition().isStarted());
        m_model->stopSpeechRecognition();
        TRY_VERIFY(recognition().isInputClosed());
        QCOMPARE(capture().installTapCount(), 0);
        QVERIFY(console.lines().isEmpty());
    }

    void releasingTheModelStopsEverything()
    {
        start(true);
        TRY_VERIFY(listens());
        const FakeRecognition recognised = recognition();
        const FakeCapture captured = capture();
        m_model.reset();
        TRY_VERIFY(!recognised.isAlive());
        QVERIFY(!captured.isAlive());
    }

    void theConfigurationIsCopiedWhenTheModelIsMade()
    {
        m_apiManager->translatedConfig = VLTranslationConfig(u"later"_s, u"westeurope"_s, u"text"_s);
        start(true);
        TRY_VERIFY(listens());
        QCOMPARE(recognition().settingsAtStart()->key, u"speech-key"_s);
    }

    void programmingErrorsEndTheProcess()
    {
        QVERIFY(!fatalErrorOf([this] { m_model->stopSpeechRecognition(); }).isNull()); // never started
        const VLApiManager withoutKeys;
        QVERIFY(!fatalErrorOf([&] {
                     const auto model = std::make_shared<SpeachToTextViewModel>(withoutKeys, *m_languages);
                     model->startSpeechRecognition(true, {});
                 }).isNull());
        QVERIFY(!fatalErrorOf([] {
                     static_cast<void>(wholeDuration(Ticks(std::numeric_limits<std::int64_t>::max())));
                 }).isNull());
        QCOMPARE(wholeDuration(Ticks(27'400'000)), 27'400'000);
    }

private:
    using Result = std::pair<QString, qint64>;

    void start(bool isSpeaker)
    {
        m_model->startSpeechRecognition(isSpeaker, [this](const QString &text, std::int64_t duration) {
            QVERIFY(QThread::currentThread() == thread());
            m_results.append({text, duration});
        });
    }
    [[nodiscard]] FakeRecognition recognition() const { return m_platform->speechService->lastRecognition(); }
    [[nodiscard]] FakeCapture capture() const { return m_platform->audio->lastCapture(); }
    [[nodiscard]] bool listens() const { return m_platform->audio->captureCount() > 0 && capture().isRunning(); }

    std::unique_ptr<TestPlatform> m_platform;
    std::unique_ptr<VLApiManager> m_apiManager;
    std::unique_ptr<LanguageTranslation> m_languages;
    std::shared_ptr<SpeachToTextViewModel> m_model;
    QList<Result> m_results;
};

QTEST_GUILESS_MAIN(TestSpeachToText)
#include "tst_speach_to_text.moc"

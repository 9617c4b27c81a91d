#include <QSemaphore>
#include <QTest>

#include <atomic>
#include <limits>
#include <thread>

#include "api/VLApiManager.h"
#include "language/LanguageTranslation.h"
#include "platform/dispatch/GlobalQueue.h"
#include "tests/fakes/CapturedConsole.h"
#include "tests/fakes/Patience.h"
#include "tests/fakes/Rows.h"
#include "tests/fakes/Secrets.h"
#include "tests/fakes/Suite.h"
#include "tests/fakes/TestPlatform.h"
#include "translation/SpeachToTextViewModel.h"
#include "translation/TextToSpeachViewModel.h"
#include "translation/TextToTextViewModel.h"
#include "translation/TranslationResponse.h"

using namespace Qt::StringLiterals;
using namespace vynlex;

namespace {

/// What each model is made with, new for each test.
struct Surroundings {
    TestPlatform platform;
    VLApiManager api;
    LanguageTranslation languages{platform.userDefaults};

    Surroundings()
    {
        api.translatedConfig = VLTranslationConfig(secrets::speechKey, u"centralindia"_s, secrets::translationKey);
    }
};

} // namespace

class TestSpeachToText : public QObject {
    Q_OBJECT

private slots:
    void init()
    {
        m_around = std::make_unique<Surroundings>();
        m_model = std::make_shared<SpeachToTextViewModel>(m_around->api, m_around->languages);
        m_results.clear();
    }

    void aSentenceGoesFromTheMicrophoneToItsOwner()
    {
        start(true);
        TRY_VERIFY(listens());
        QCOMPARE(recognition().settingsAtStart(),
                 (SpeechSettings{secrets::speechKey, u"centralindia"_s, u"en-US"_s, {}, true}));
        QCOMPARE(capture().tapFrames(), 2048);

        // 2048 frames at 48 kHz are 42.7 ms: 682 frames of the service's rate, 16 bits each
        QVERIFY(capture().hearSilence());
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

    void whatWasHeardBeforeAStopIsRecognised()
    {
        start(true);
        TRY_VERIFY(listens());
        // Nobody comes to convert anything for a while.
        const auto blocked = std::make_shared<QSemaphore>();
        const auto gate = std::make_shared<QSemaphore>();
        for (int i = 0; i < GlobalQueue::maximumThreads; ++i) {
            GlobalQueue::async([blocked, gate] {
                blocked->release();
                gate->acquire();
            });
        }
        blocked->acquire(GlobalQueue::maximumThreads);
        constexpr int buffers = 100;
        for (int i = 0; i < buffers; ++i)
            QVERIFY(capture().hearSilence());
        m_model->stopSpeechRecognition();
        gate->release(GlobalQueue::maximumThreads);
        TRY_VERIFY(recognition().isInputClosed());
        QCOMPARE(recognition().audio().size(), buffers * 682 * 2);
    }

    void whatHasNoTextIsAnEmptyResultOrOnlyALine()
    {
        start(true);
        TRY_VERIFY(listens());
        const CapturedConsole console;
        recognition().deliverRecognized(SpeechRecognitionResult{});
        TRY_COMPARE(m_results, (QList<Result>{{QString(), 0}}));
        recognition().deliverCanceled(
            {CancellationReason::Error, CancellationErrorCode::NoError, u"Authentication error (401)"_s});
        start(true);
        TRY_VERIFY(m_around->platform.speechService->recognitionCount() == 2 && recognition().isStarted());
        recognition().deliverCanceled({CancellationReason::Error, CancellationErrorCode::NoError, {}});
        TRY_COMPARE(console.lines(), (QStringList{u"Final recognition result: (no result)"_s,
                                                  u"Recognition canceled: Authentication error (401)"_s,
                                                  u"Recognition canceled: (no result)"_s}));
        QCOMPARE(m_results.size(), 1);
    }

    void startingAgainReplacesTheRecogniserAndTheTap()
    {
        start(true);
        TRY_VERIFY(listens());
        const FakeRecognition first = recognition();
        m_around->languages.store(Side::Listener, LanguageOption::telugu);
        m_around->api.translatedConfig = VLTranslationConfig(u"later"_s, u"westeurope"_s, u"text"_s);
        start(false);
        TRY_COMPARE(m_around->platform.speechService->recognitionCount(), 2);
        QCOMPARE(recognition().settingsAtStart()->recognitionLanguage, u"te-IN"_s); // of its side
        QCOMPARE(recognition().settingsAtStart()->key, secrets::speechKey);         // that of the model's beginning
        QVERIFY(!first.isAlive());
        TRY_VERIFY(capture().hearSilence() && !recognition().audio().isEmpty());
    }

    void aFailedStartIsSaidAndWithoutAMicrophoneRecognitionWaitsInSilence()
    {
        {
            const CapturedConsole console;
            m_around->platform.speechService->failNextStart(u"no start"_s);
            m_around->platform.audio->failNextEngineStart(u"no microphone"_s);
            start(true);
            TRY_COMPARE(console.lines(),
                        (QStringList{u"Error starting continuous recognition: no start"_s, u"no microphone"_s}));
        }
        init();
        const CapturedConsole console;
        m_around->platform.audio->setInputFormat({0, 1, AudioFormat::SampleType::Float32});
        start(true);
        TRY_VERIFY(m_around->platform.speechService->recognitionCount() == 1 && recognition().isStarted());
        m_model->stopSpeechRecognition();
        TRY_VERIFY(recognition().isInputClosed());
        QVERIFY(!capture().hasTap());
        QVERIFY(console.lines().isEmpty());
    }

    void programmingErrorsEndTheProcess()
    {
        QVERIFY(!fatalErrorOf([this] { m_model->stopSpeechRecognition(); }).isNull()); // never started
        const VLApiManager withoutKeys;
        QVERIFY(!fatalErrorOf([&] {
                     const auto model = std::make_shared<SpeachToTextViewModel>(withoutKeys, m_around->languages);
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
    [[nodiscard]] FakeRecognition recognition() const { return m_around->platform.speechService->lastRecognition(); }
    [[nodiscard]] FakeCapture capture() const { return m_around->platform.audio->lastCapture(); }
    [[nodiscard]] bool listens() const { return m_around->platform.audio->captureCount() > 0 && capture().isRunning(); }

    std::unique_ptr<Surroundings> m_around;
    std::shared_ptr<SpeachToTextViewModel> m_model;
    QList<Result> m_results;
};

class TestTextToText : public QObject {
    Q_OBJECT

private slots:
    void init()
    {
        m_around = std::make_unique<Surroundings>();
        m_model = std::make_unique<TextToTextViewModel>(m_around->api);
        m_outcomes.clear();
    }

    void theRequestIsWhatTheTranslatorExpects()
    {
        translate(u"a \"नमस्ते\" \\ c"_s, u"te"_s);
        const HttpRequest request = network().request(0);
        QCOMPARE(request.method, QByteArray("POST"));
        QCOMPARE(request.url.toString(QUrl::FullyEncoded),
                 u"https://api.cognitive.microsofttranslator.com/translate?api-version=3.0&to=te"_s);
        QCOMPARE(request.headers, (HttpHeaders{{"Ocp-Apim-Subscription-Key", secrets::translationKey.data()},
                                               {"Content-Type", "application/json"},
                                               {"Ocp-Apim-Subscription-Region", "centralindia"}}));
        QCOMPARE(request.body, "[{\"Text\":\"a \"नमस्ते\" \\ c\"}]"); // nothing is escaped
        QVERIFY(!request.timeout);
        m_around->api.translatedConfig.reset();
        translate(u"x"_s, u"te"_s);
        QCOMPARE(network().request(1).headers.at(0).second, QByteArray(""));
        QCOMPARE(network().request(1).headers.at(2).second, QByteArray(""));
    }

    void anAnswerIsATextAnErrorOrSilence_data()
    {
        QTest::addColumn<HttpResponse>("answer");
        QTest::addColumn<QString>("told");
        const auto row = [](const char *name, const QByteArray &body, const QString &told, int status = 200) {
            QTest::newRow(name) << HttpResponse{status, {}, body} << told;
        };
        row("plain", R"([{"translations":[{"text":"नमस्ते","to":"hi"}]}])", u"नमस्ते"_s);
        row("the first of all",
            R"([{"detectedLanguage":{"language":"en","score":1},"x":0,"translations":[{"text":"a","to":"hi"},)"
            R"({"text":"b","to":"te"}]},{"translations":[]}])",
            u"a"_s);
        row("no element", "[]", silence);
        row("no translations", R"([{"detectedLanguage":{"language":"en","score":1}}])", silence);
        const QString error = u"DecodingErrorDomain "_s;
        row("error body", R"({"error":{"code":401000,"message":"no"}})", error + u"$: expected an array"_s, 401);
        row("key echoed", QByteArray("{\"error\":\"") + secrets::translationKey.data() + "\"}",
            error + u"$: expected an array"_s, 401);
        row("mistyped text", R"([{"translations":[{"text":7,"to":"hi"}]}])",
            error + u"$[0].translations[0].text: expected text"_s);
        row("missing target", R"([{"translations":[{"text":"a"}]}])", error + u"$[0].translations[0].to: missing"_s);
        row("no UTF-8", "\xff\xfe", error);
        QTest::newRow("no data") << HttpResponse{200, {}, std::nullopt} << u"TranslationErrorDomain "_s;
    }
    void anAnswerIsATextAnErrorOrSilence()
    {
        QFETCH(const HttpResponse, answer);
        QFETCH(const QString, told);
        translate(u"x"_s, u"hi"_s);
        translate(u"y"_s, u"hi"_s);
        const CapturedConsole console;
        network().answer(0, answer);
        network().fail(1, {TransportError::Kind::HostNotFound, u"No such host."_s});
        TRY_VERIFY(!m_outcomes.isEmpty() && m_outcomes.last().endsWith(u"No such host."_s));
        QCOMPARE(m_outcomes.size(), told == silence ? 1 : 2);
        if (told != silence) // The decoder's own words are not all ours.
            QVERIFY2(m_outcomes[0] == told || (told.endsWith(u' ') && m_outcomes[0].startsWith(told)),
                     qPrintable(m_outcomes[0]));
        const QString printed = QString::fromUtf8(answer.body.value_or("")).replace(secrets::translationKey, u"***"_s);
        const bool isPrinted = answer.body && !printed.contains(QChar::ReplacementCharacter);
        QCOMPARE(console.lines(), isPrinted ? QStringList{u"String data: "_s + printed} : QStringList());
    }

    void anAddressThatCannotBeFormedEndsTheProcess()
    {
        QVERIFY(!fatalErrorOf([this] { translate(u"x"_s, u"%zz"_s); }).isNull());
    }

private:
    void translate(const QString &text, const QString &to)
    {
        m_model->translateText(text, to, [this](const tl::expected<QString, TranslationError> &outcome) {
            m_outcomes << (outcome ? *outcome : outcome.error().domain + u' ' + outcome.error().message);
        });
    }
    [[nodiscard]] FakeHttpNetwork &network() const { return *m_around->platform.network; }

    inline static const QString silence = u"(silence)"_s;
    std::unique_ptr<Surroundings> m_around;
    std::unique_ptr<TextToTextViewModel> m_model;
    QStringList m_outcomes;
};

class TestTextToSpeach : public QObject {
    Q_OBJECT

private slots:
    void init()
    {
        m_around = std::make_unique<Surroundings>();
        m_model = std::make_unique<TextToSpeachViewModel>(m_around->api, m_around->languages);
        m_completed = 0;
    }

    void theVoiceIsThatOfTheSideUnlessOneIsNamed()
    {
        m_around->platform.speechService->completeSpeakingAtOnce();
        const CapturedConsole console;
        speak(u"Hello."_s, true);
        const FakeUtterance utterance = m_around->platform.speechService->lastUtterance();
        QCOMPARE(utterance.text(), u"Hello."_s);
        QCOMPARE(utterance.settings().voiceName, u"en-US-AriaNeural"_s);
        QCOMPARE(utterance.settings().key, secrets::speechKey);
        QVERIFY(m_around->platform.audio->isSessionActive());
        QCOMPARE(m_completed.load(), 1);
        QCOMPARE(console.lines(), QStringList{u"completedSynthesizer"_s});
        speak(u"Hello."_s, false);
        QCOMPARE(m_around->platform.speechService->lastUtterance().settings().voiceName, u"hi-IN-SwaraNeural"_s);
        speak(u"Hello."_s, true, u"te-IN-ShrutiNeural"_s);
        QCOMPARE(m_around->platform.speechService->lastUtterance().settings().voiceName, u"te-IN-ShrutiNeural"_s);
    }

    void aStopReachesTextsThatTheirThreadHasNotComeTo()
    {
        m_around->platform.speechService->completeSpeakingAtOnce();
        const std::uint64_t first = m_model->announce();
        m_model->stopSpeaking();
        const std::uint64_t second = m_model->announce();
        m_model->stopSpeaking();
        const std::uint64_t third = m_model->announce();
        const auto read = [&](std::uint64_t call, const QString &text) {
            std::thread([&] { m_model->speakText(call, text, true, {}, [this] { ++m_completed; }); }).join();
        };
        read(second, u"second"_s); // threads keep no order
        read(third, u"third"_s);
        read(first, u"first"_s);
        QCOMPARE(m_around->platform.speechService->utteranceCount(), 1);
        QCOMPARE(m_around->platform.speechService->lastUtterance().text(), u"third"_s);
        QCOMPARE(m_completed.load(), 1);
    }

    void anEmptyTextSpeaksNothingAndEveryFailureIsItsLine()
    {
        FakeSpeechService &service = *m_around->platform.speechService;
        const CapturedConsole console;
        speak({}); // prepares everything
        QVERIFY(m_around->platform.audio->isSessionActive());
        QCOMPARE(service.synthesizerCount(), 1);
        QCOMPARE(service.utteranceCount(), 0);
        service.failNextSynthesizer(u"no loudspeaker"_s);
        speak(u"a"_s);
        service.failNextSpeakText(u"taken away"_s);
        speak(u"a"_s);
        service.cancelNextSpeakText(
            {CancellationReason::Error, CancellationErrorCode::AuthenticationFailure, u"wrong key"_s});
        speak(u"a"_s);
        m_around->platform.audio->failNextSetCategory(u"busy"_s);
        speak({});
        m_around->platform.audio->failNextSetActive(u"in a call"_s);
        speak({});
        QCOMPARE(console.lines(), (QStringList{u"Error creating speech synthesizer: no loudspeaker"_s,
                                               u"Error during speech synthesis: taken away"_s,
                                               u"Speech synthesis cancelled, detail: wrong key "_s,
                                               u"Error setting audio session category: busy"_s,
                                               u"Error setting audio session category: in a call"_s}));
        QCOMPARE(m_completed.load(), 0);
    }

private:
    /// As the screens do it: on a thread that may be blocked.
    void speak(const QString &text, bool isSpeaker = true, const QString &voiceName = {})
    {
        std::thread([&] { m_model->speakText(text, isSpeaker, voiceName, [this] { ++m_completed; }); }).join();
    }

    std::unique_ptr<Surroundings> m_around;
    std::unique_ptr<TextToSpeachViewModel> m_model;
    std::atomic<int> m_completed = 0;
};

template struct vynlex::InSuite<TestSpeachToText>;
template struct vynlex::InSuite<TestTextToText>;
template struct vynlex::InSuite<TestTextToSpeach>;

SUITE_MAIN(QCoreApplication)

#include "tst_translation_models.moc"

#include <QTest>

#include <atomic>
#include <functional>
#include <future>
#include <thread>

#include "platform/dispatch/Guarded.h"
#include "platform/speech/CloudSpeechService.h"
#include "tests/fakes/FakeAudio.h"
#include "tests/fakes/FakeSocketWorker.h"
#include "tests/fakes/FakeSpeechService.h"
#include "tests/fakes/Patience.h"
#include "tests/fakes/Suite.h"
#include "tests/platform/speech/WireMessage.h"

using namespace std::chrono_literals;
using namespace vynlex;
using Outcome = tl::expected<SpeechSynthesisResult, QString>;

namespace {

/// What both services promise, and how a test makes each of them answer. The service's thread is never the test's.
class ServiceUnderTest {
public:
    virtual ~ServiceUnderTest() = default;
    virtual SpeechService &service() = 0;
    /// The recogniser or synthesiser that was made last has reached the service.
    virtual bool isListening() = 0;
    virtual bool isSpeaking() = 0;
    /// A final result, or the end of everything, for the recogniser that was made last. May come to nothing when it is
    /// gone meanwhile.
    virtual void recognise(const QString &text) = 0;
    virtual void endOfStream() = 0;
    virtual void refuse() = 0;
    /// The text that is being spoken has been heard to its end, or is refused.
    virtual void completeSpeaking() = 0;
    virtual void refuseSpeaking() = 0;
};

class Fake final : public ServiceUnderTest {
public:
    SpeechService &service() override { return m_service; }
    bool isListening() override { return m_service.recognitionCount() > 0 && m_service.lastRecognition().isStarted(); }
    bool isSpeaking() override { return m_service.utteranceCount() > 0 && m_service.lastUtterance().isSpeaking(); }
    void recognise(const QString &text) override { m_service.lastRecognition().deliverRecognized(text); }
    void endOfStream() override
    {
        m_service.lastRecognition().deliverCanceled({CancellationReason::EndOfStream, {}, {}});
    }
    void refuse() override
    {
        m_service.lastRecognition().deliverCanceled(
            {CancellationReason::Error, CancellationErrorCode::AuthenticationFailure, "refused"});
    }
    void completeSpeaking() override { m_service.lastUtterance().complete(); }
    void refuseSpeaking() override
    {
        m_service.lastUtterance().cancel(
            {CancellationReason::Error, CancellationErrorCode::AuthenticationFailure, "refused"});
    }

private:
    FakeSpeechService m_service;
};

/// The cloud service on a socket worker that has a thread of its own, where the other side is played as well.
class Cloud final : public ServiceUnderTest {
public:
    Cloud()
    {
        const auto made = std::make_shared<std::promise<std::shared_ptr<FakeSocketWorker>>>();
        auto worker = made->get_future();
        m_thread = std::thread([this, made] {
            m_worker = std::make_shared<FakeSocketWorker>();
            made->set_value(m_worker);
            while (!m_quit) {
                m_worker->run();
                std::this_thread::yield();
            }
            m_worker->run();
        });
        m_service = std::make_unique<CloudSpeechService>(worker.get(), [this] { return m_audio.makePlayer(); });
    }
    ~Cloud() override
    {
        m_quit = true;
        m_thread.join();
    }

    SpeechService &service() override { return *m_service; }
    bool isListening() override { return isReached("speech.config"); }
    bool isSpeaking() override { return isReached("ssml"); }
    void recognise(const QString &text) override
    {
        // The service has heard nothing, so the phrase covers nothing.
        onWorker(
            [&] { say("speech.phrase", R"({"RecognitionStatus":"Success","DisplayText":")" + text.toUtf8() + "\"}"); });
    }
    void endOfStream() override
    {
        onWorker([&] { say("turn.end"); });
    }
    void refuse() override
    {
        onWorker([&] { m_worker->lastSocket().disconnected(1007, "refused"); });
    }
    void completeSpeaking() override
    {
        onWorker([&] {
            m_worker->lastSocket().binary(serviceAudio(turn(), "abcd"));
            say("turn.end");
        });
        if (m_audio.lastPlayback().isFinished())
            m_audio.lastPlayback().complete();
    }
    void refuseSpeaking() override { refuse(); }

private:
    QByteArray turn() { return readWire(m_worker->lastSocket().sent().back()).requestId; }
    void say(const char *path, const QByteArray &body = "{}")
    {
        m_worker->lastSocket().text(serviceText(path, turn(), body));
    }

    bool isReached(const QString &path)
    {
        bool reached = false;
        onWorker([&] {
            if (m_worker->socketCount() == 0)
                return;
            FakeSocket socket = m_worker->lastSocket();
            if (socket.isConnecting())
                socket.connected();
            for (const auto &message : socket.sent())
                reached = reached || (socket.isAlive() && readWire(message).path == path);
        });
        return reached;
    }

    /// Runs `task` there, and returns after what it posted has been taken up too.
    void onWorker(const std::function<void()> &task)
    {
        const auto done = std::make_shared<std::promise<void>>();
        m_worker->post([this, &task, done] {
            task();
            m_worker->post([done] { done->set_value(); });
        });
        done->get_future().wait();
    }

    FakeAudio m_audio;
    std::atomic<bool> m_quit = false;
    std::shared_ptr<FakeSocketWorker> m_worker;
    std::thread m_thread;
    std::unique_ptr<CloudSpeechService> m_service;
};

SpeechConfig config()
{
    return SpeechConfig::fromSubscription("key", "westeurope").value();
}

} // namespace

/// The promises of `SpeechService.h`, for the fake and for the shipped service alike.
class TestSpeechService : public QObject {
    Q_OBJECT

    static std::unique_ptr<ServiceUnderTest> makeService()
    {
        return makeFakeOrShipped<ServiceUnderTest, Fake, Cloud>();
    }
    /// A text that is being spoken on a thread of its own.
    static std::future<Outcome> speak(ServiceUnderTest &under, SpeechSynthesizer *synthesizer)
    {
        auto outcome = std::async(std::launch::async, [synthesizer] { return synthesizer->speakText("Hello"); });
        while (!under.isSpeaking())
            std::this_thread::yield();
        return outcome;
    }

    /// A recogniser with its stream, to which 100 ms have been written.
    struct Listening {
        PushAudioInputStream stream = PushAudioInputStream::create();
        std::shared_ptr<SpeechRecognizer> recognizer;

        explicit Listening(ServiceUnderTest &under)
            : recognizer(under.service().makeRecognizer(config(), AudioConfig::fromStreamInput(stream)).value())
        {
            stream.write(QByteArray(3200, 'a'));
        }
    };

private slots:
    void initTestCase_data() { addFakeAndShipped(); }

    void resultsArriveInOrderOnTheServicesThreadAndTheEndComesOnce()
    {
        const auto under = makeService();
        auto [stream, recognizer] = Listening(*under);
        Guarded<QStringList> heard;
        std::atomic<bool> onTestsThread = false;
        recognizer->recognized = [&, test = std::this_thread::get_id()](const SpeechRecognitionResult &result) {
            onTestsThread = onTestsThread || std::this_thread::get_id() == test;
            heard.with([&](QStringList &list) { list += result.text; });
        };
        recognizer->canceled = [&](const CancellationDetails &details) {
            heard.with([&](QStringList &list) {
                list += details.reason == CancellationReason::EndOfStream && details.errorDetails.isEmpty() ? "end"
                                                                                                            : "error";
            });
        };
        QVERIFY(recognizer->startContinuousRecognition());
        QVERIFY(!recognizer->startContinuousRecognition());
        TRY_VERIFY(under->isListening());
        under->recognise("one");
        under->recognise("two");
        stream.close();
        under->endOfStream();
        TRY_COMPARE(heard.copy(), (QStringList{"one", "two", "end"}));
        QVERIFY(!onTestsThread);
    }

    void noHandlerRunsOnceTheDestructorHasReturned()
    {
        const auto under = makeService();
        for (int round = 0; round < 200; ++round) {
            auto [stream, recognizer] = Listening(*under);
            int calls = 0; // Not atomic: the destructor orders every call before what follows it.
            recognizer->recognized = [&](const auto &) { ++calls; };
            recognizer->canceled = [&](const auto &) { ++calls; };
            QVERIFY(recognizer->startContinuousRecognition());
            while (!under->isListening())
                std::this_thread::yield();
            std::thread service([&] {
                under->recognise("one");
                under->recognise("two");
            });
            std::thread writer([stream]() mutable {
                for (int i = 0; i < 20; ++i)
                    stream.write(QByteArray(320, 'b'));
            });
            if (round % 2)
                std::this_thread::yield();
            recognizer.reset();
            const int before = calls;
            service.join();
            writer.join();
            QCOMPARE(calls, before);
        }
    }

    void aRecogniserMayEndInItsOwnHandler()
    {
        const auto under = makeService();
        for (const bool refused : {false, true}) {
            auto [stream, recognizer] = Listening(*under);
            std::atomic<int> calls = 0;
            const auto destroy = [&, own = std::make_shared<int>(1)](const auto &) {
                recognizer.reset();
                calls += *own; // What the handler holds lives until it returns.
            };
            recognizer->recognized = destroy;
            recognizer->canceled = destroy;
            QVERIFY(recognizer->startContinuousRecognition());
            TRY_VERIFY(under->isListening());
            if (refused)
                under->refuse();
            else
                under->recognise("one");
            TRY_COMPARE(calls.load(), 1);
        }
    }

    void speakingReturnsAfterItsHandlerHasRun()
    {
        const auto under = makeService();
        const auto synthesizer = under->service().makeSynthesizer(config()).value();
        int completed = 0; // Not atomic: the call that returns orders it.
        synthesizer->synthesisCompleted = [&](const SpeechSynthesisResult &) { ++completed; };
        auto outcome = speak(*under, synthesizer.get());
        QVERIFY(outcome.wait_for(0s) != std::future_status::ready);
        under->completeSpeaking();
        const Outcome result = outcome.get();
        QCOMPARE(completed, 1);
        QCOMPARE(result.value().reason, ResultReason::SynthesizingAudioCompleted);
        QVERIFY(result->audioDuration > Ticks::zero());
    }

    void aTextThatIsRefusedOrStoppedIsACancelledResult()
    {
        const auto under = makeService();
        const auto synthesizer = under->service().makeSynthesizer(config()).value();
        std::atomic<int> completed = 0;
        synthesizer->synthesisCompleted = [&](const auto &) { ++completed; };
        auto outcome = speak(*under, synthesizer.get());
        under->refuseSpeaking();
        const Outcome refused = outcome.get();
        QCOMPARE(refused.value().reason, ResultReason::Canceled);
        QCOMPARE(refused->cancellation.reason, CancellationReason::Error);
        QVERIFY(refused->cancellation.errorDetails.contains("refused"));

        QVERIFY(synthesizer->stopSpeaking()); // Nothing is being spoken.
        outcome = speak(*under, synthesizer.get());
        QVERIFY(synthesizer->stopSpeaking());
        QCOMPARE(outcome.get().value().cancellation.reason, CancellationReason::CancelledByUser);
        QCOMPARE(completed.load(), 0);
    }

    void aTextCanBeStoppedOnceItHasStarted()
    {
        const auto under = makeService();
        const auto synthesizer = under->service().makeSynthesizer(config()).value();
        synthesizer->synthesisStarted = [raw = synthesizer.get()] { raw->stopSpeaking(); };
        const auto result = std::async(std::launch::async, [&] { return synthesizer->speakText("Hello."); }).get();
        QCOMPARE(result.value().cancellation.reason, CancellationReason::CancelledByUser);
    }

    void endsFromSeveralThreadsMeetInOneOutcome()
    {
        const auto under = makeService();
        for (int round = 0; round < 100; ++round) {
            auto synthesizer = under->service().makeSynthesizer(config()).value();
            int completed = 0;
            synthesizer->synthesisCompleted = [&](const auto &) { ++completed; };
            auto outcome = speak(*under, synthesizer.get());
            std::thread stopper([raw = synthesizer.get()] { raw->stopSpeaking(); });
            if (round % 2)
                std::this_thread::yield();
            std::thread service([&] { under->completeSpeaking(); });
            stopper.join();
            synthesizer.reset(); // While the call may still block.
            service.join();
            const Outcome result = outcome.get();
            QVERIFY(result);
            QCOMPARE(completed, result->reason == ResultReason::SynthesizingAudioCompleted ? 1 : 0);
        }
    }
};

template struct vynlex::InSuite<TestSpeechService>;

#include "tst_speech_service.moc"

#include <QTest>

#include <future>
#include <thread>

#include "platform/speech/CloudSpeechService.h"
#include "tests/fakes/FakeAudio.h"
#include "tests/fakes/FakeSocketWorker.h"
#include "tests/fakes/Rows.h"
#include "tests/fakes/Secrets.h"
#include "tests/fakes/Suite.h"
#include "tests/platform/speech/WireMessage.h"

using namespace std::chrono_literals;
using namespace vynlex;
using Code = CancellationErrorCode;
using Outcome = tl::expected<SpeechSynthesisResult, QString>;

namespace {

constexpr auto key = secrets::speechKey.data();

/// A synthesiser with a scripted service at one end and a fake loudspeaker at the other. The test's thread is the
/// socket worker; `speakText` blocks another.
struct World {
    std::shared_ptr<FakeSocketWorker> worker = std::make_shared<FakeSocketWorker>();
    FakeAudio audio;
    CloudSpeechService service{worker, [this] { return audio.makePlayer(); }};
    SpeechConfig config = SpeechConfig::fromSubscription(key, "westeurope").value();
    std::shared_ptr<SpeechSynthesizer> synthesizer = service.makeSynthesizer(config).value();
    std::vector<SpeechSynthesisResult> completed;
    std::future<Outcome> outcome;

    World()
    {
        config.setSpeechSynthesisVoiceName("de-DE-KatjaNeural");
        synthesizer->synthesisCompleted = [this](const auto &result) { completed.push_back(result); };
    }
    ~World()
    {
        if (synthesizer)
            synthesizer->stopSpeaking();
        if (outcome.valid())
            outcome.wait();
        worker->run();
    }

    void begin(const QString &text = "Guten Tag")
    {
        outcome = std::async(std::launch::async, [speaker = synthesizer, text] { return speaker->speakText(text); });
        awaitConnection();
    }
    void awaitConnection()
    {
        for (const int before = worker->socketCount(); worker->socketCount() == before && !isOver();) {
            std::this_thread::yield();
            worker->run();
        }
    }
    void beginConnected(const QString &text = "Guten Tag")
    {
        begin(text);
        deliver(websocket::Connected{});
    }

    enum Progress { Connecting, Connected, TurnStarted, SomeSound, AllSound };
    /// Lets `pause` pass before each step after the connection.
    void beginUntil(Progress progress, std::chrono::milliseconds pause = 0ms)
    {
        begin();
        if (progress >= Connected)
            deliver(websocket::Connected{});
        if (progress >= TurnStarted) {
            worker->advance(pause);
            say("turn.start");
        }
        if (progress >= SomeSound) {
            worker->advance(pause);
            send(QByteArray(480, 'a'));
        }
        if (progress >= AllSound)
            say("turn.end");
    }

    FakeSocket link() const { return worker->lastSocket(); }
    FakePlayback sound() const { return audio.lastPlayback(); }
    void deliver(const WebSocketEvent &event)
    {
        link().deliver(event);
        worker->run();
    }
    void say(const char *path, const QByteArray &body = "{}")
    {
        deliver(websocket::Text{serviceText(path, requestId(), body)});
    }
    void send(const QByteArray &pcm) { deliver(websocket::Binary{serviceAudio(requestId(), pcm)}); }
    QByteArray requestId() const { return readWire(link().sent().back()).requestId; }

    bool isOver() const { return outcome.wait_for(0s) == std::future_status::ready; }
    Outcome result()
    {
        auto value = outcome.get();
        worker->run();
        return value;
    }
};

websocket::Error failed(WebSocketError::Kind kind, int status = 0)
{
    return {{kind, status, "message"}};
}

} // namespace

Q_DECLARE_METATYPE(vynlex::WebSocketEvent)

class TestSynthesis : public QObject {
    Q_OBJECT

private slots:
    void aWholeConversation()
    {
        World world;
        world.begin("Tom & Jerry");
        const WebSocketRequest request = world.link().request();
        QCOMPARE(request.url, QUrl("wss://westeurope.tts.speech.microsoft.com/cognitiveservices/websocket/v1"));
        QCOMPARE(request.headers.at(0), std::pair(QByteArray("Ocp-Apim-Subscription-Key"), QByteArray(key)));
        QCOMPARE(request.headers.at(1).first, "X-ConnectionId");
        world.deliver(websocket::Connected{});

        std::vector<WireMessage> sent;
        for (const auto &message : world.link().sent())
            sent.push_back(readWire(message));
        QCOMPARE(sent.size(), 3U);
        for (const auto &message : sent) {
            QCOMPARE(message.error, "");
            QCOMPARE(message.requestId, sent[0].requestId);
        }
        QCOMPARE(sent[0].path, "speech.config");
        QCOMPARE(sent[1].path, "synthesis.context");
        const QJsonObject audio = sent[1].json()["synthesis"].toObject()["audio"].toObject();
        QCOMPARE(audio["outputFormat"], "raw-24khz-16bit-mono-pcm");
        QVERIFY(audio["metadataOptions"].isObject());
        QCOMPARE(sent[2].path, "ssml");
        QCOMPARE(sent[2].contentType, "application/ssml+xml");
        QCOMPARE(sent[2].body, "<speak version='1.0' xmlns='http://www.w3.org/2001/10/synthesis' xml:lang='de-DE'>"
                               "<voice name='de-DE-KatjaNeural'>Tom &amp; Jerry</voice></speak>");

        world.say("turn.start", "{\r\n  \"context\": {\r\n    \"serviceTag\": \"e34f\"\r\n  }\r\n}");
        world.say("response", R"({"audio":{"type":"inline","streamId":"297c"}})");
        world.say("audio.metadata", R"({"Metadata":[]})");
        QCOMPARE(world.sound().format(), (AudioFormat{24'000, 1, AudioFormat::SampleType::Int16}));
        world.send(QByteArray(4800, 'a'));
        QCOMPARE(world.sound().pcm().size(), 4800);           // Heard before the rest is there.
        world.send(QByteArray("Path:audio\r\n\r\n!!") + "x"); // Odd: half a sample waits for the rest.
        world.send(QByteArray(4783, 'b'));
        world.send("");
        QVERIFY(!world.sound().isFinished());
        world.say("turn.end");
        QVERIFY(world.sound().isFinished());
        QCOMPARE(world.sound().pcm(), QByteArray(4800, 'a') + "Path:audio\r\n\r\n!!x" + QByteArray(4783, 'b'));
        QCOMPARE(world.link().closing()->code, 1000);
        world.deliver(websocket::Disconnected{});
        QVERIFY(!world.isOver());
        QVERIFY(world.completed.empty());

        world.sound().complete();
        QVERIFY(world.completed.empty()); // Not on the player's thread.
        world.worker->run();
        QCOMPARE(world.completed.size(), 1U);
        const Outcome outcome = world.result();
        QVERIFY(outcome);
        QCOMPARE(outcome->reason, ResultReason::SynthesizingAudioCompleted);
        QCOMPARE(outcome->audioDuration, 200ms);
        QCOMPARE(world.worker->runningTimers(), 0U);
    }

    void aFailureCancelsWithTheServicesWords_data()
    {
        using Kind = WebSocketError::Kind;
        const QString none = "Connection failed (no connection to the remote host). Internal error: 1. Error details: "
                             "Failed with error: WS_OPEN_ERROR_UNDERLYING_IO_OPEN_FAILED\n"
                             "wss://westeurope.tts.speech.microsoft.com/cognitiveservices/websocket/v1\n"
                             "X-ConnectionId: {id} USP state: Sending. Received audio size: 0 bytes.";
        const QString closed = "Connection was closed by the remote host. Error code: ";
        addRows<WebSocketEvent, World::Progress, Code, QString>({
            {"no host", failed(Kind::HostNotFound), World::Connecting, Code::ConnectionFailure, none},
            {"unknown voice", websocket::Disconnected{"Unsupported voice de-DE-KatjaNeural.", 1007}, World::TurnStarted,
             Code::BadRequest,
             closed +
                 "1007. Error details: Unsupported voice de-DE-KatjaNeural. USP state: TurnStarted. Received audio "
                 "size: 0 bytes."},
            {"closed as if done", websocket::Disconnected{"", 1000}, World::SomeSound, Code::ConnectionFailure,
             closed + "1000. Error details:  USP state: ReceivingData. Received audio size: 480 bytes."},
            {"lost", websocket::PeerClosed{}, World::SomeSound, Code::ConnectionFailure,
             "WebSocket operation failed. Internal error: 3. Error details: WS_ERROR_UNDERLYING_IO_ERROR USP state: "
             "ReceivingData. Received audio size: 480 bytes."},
        });
    }
    void aFailureCancelsWithTheServicesWords()
    {
        auto [event, progress, code, text] = currentRow<WebSocketEvent, World::Progress, Code, QString>();
        World world;
        world.beginUntil(progress);
        world.deliver(event);
        const Outcome outcome = world.result();
        QVERIFY(outcome);
        QCOMPARE(outcome->reason, ResultReason::Canceled);
        QCOMPARE(outcome->cancellation.reason, CancellationReason::Error);
        QCOMPARE(outcome->cancellation.errorCode, code);
        QCOMPARE(outcome->cancellation.errorDetails,
                 text.replace("{id}", QString::fromLatin1(world.link().request().headers[1].second)));
        QVERIFY(world.sound().wasStopped());
        QVERIFY(world.completed.empty());
        QCOMPARE(world.worker->socketCount(), 1);
        QCOMPARE(world.worker->runningTimers(), 0U);
    }

    void aSilentServiceIsGivenUp_data()
    {
        const QString first =
            "USP error: timeout waiting for the first audio chunk USP state: %1. Received audio size: "
            "0 bytes.";
        addRows<World::Progress, QString>({
            {"no turn.start", World::Connected, first.arg("Sending")},
            {"no sound", World::TurnStarted, first.arg("TurnStarted")},
            {"no more sound, no turn.end", World::SomeSound,
             "Timeout while synthesizing. USP state: ReceivingData. Received audio size: 480 bytes."},
        });
    }
    void aSilentServiceIsGivenUp()
    {
        const auto [progress, text] = currentRow<World::Progress, QString>();
        World world;
        world.beginUntil(progress, 9s);
        world.worker->advance(9'999ms);
        QVERIFY(!world.isOver());
        world.worker->advance(1ms);
        const Outcome outcome = world.result();
        QCOMPARE(outcome->cancellation.errorCode, Code::ServiceTimeout);
        QCOMPARE(outcome->cancellation.errorDetails, text);
        QVERIFY(!world.link().isAlive());
    }

    void messagesThatAreNotForTheRequestAreSkipped()
    {
        World world;
        world.beginConnected();
        const QByteArray other(32, '0');
        world.deliver(websocket::Text{serviceText("turn.end", other)});
        world.deliver(websocket::Binary{serviceAudio(other, "abcd")});
        world.deliver(websocket::Text{"nonsense"});
        world.deliver(websocket::Text{"Path: turn.end\r\n\r\n"});
        world.deliver(websocket::Binary{QByteArray::fromHex("ffff00")});
        world.deliver(websocket::Binary{{}});
        world.say("speech.phrase", "{");
        QVERIFY(world.sound().pcm().isEmpty());
        QVERIFY(!world.isOver());
        world.send("efgh"); // Sound without turn.start, without response.
        world.say("turn.end", "");
        QCOMPARE(world.sound().pcm(), "efgh");
    }

    void stoppingEndsTheSoundAndDropsWhatComesLater_data()
    {
        addRows<World::Progress>({
            {"connecting", World::Connecting},
            {"receiving", World::SomeSound},
            {"playing the rest", World::AllSound},
        });
    }
    void stoppingEndsTheSoundAndDropsWhatComesLater()
    {
        const auto [progress] = currentRow<World::Progress>();
        World world;
        world.beginUntil(progress);
        QVERIFY(world.synthesizer->stopSpeaking());
        QVERIFY(world.sound().wasStopped());
        if (progress == World::SomeSound) {
            // The message was on its way; the worker has not heard of the stop yet.
            world.link().binary(serviceAudio(world.requestId(), "efgh"));
            world.link().text(serviceText("turn.end", world.requestId()));
        }
        const Outcome outcome = world.result();
        QCOMPARE(outcome->reason, ResultReason::Canceled);
        QCOMPARE(outcome->cancellation.reason, CancellationReason::CancelledByUser);
        QCOMPARE(outcome->cancellation.errorCode, Code::NoError);
        QVERIFY(!world.link().isAlive());
        QVERIFY(world.completed.empty());
        QVERIFY(world.synthesizer->stopSpeaking()); // Nothing is being spoken: fine.

        // The next text is spoken.
        world.beginConnected("Noch einmal");
        world.say("turn.end");
        world.sound().complete();
        world.worker->run();
        QCOMPARE(world.result()->reason, ResultReason::SynthesizingAudioCompleted);
    }

    void aLoudspeakerThatDoesNotWorkFailsTheCall()
    {
        World world;
        world.audio.failNextPlayerStart("There is no loudspeaker.");
        world.begin();
        const Outcome notStarted = world.result();
        QVERIFY(!notStarted);
        QCOMPARE(notStarted.error(), "There is no loudspeaker.");
        QVERIFY(world.worker->socketCount() == 0);

        world.beginConnected();
        world.send("abcd");
        world.say("turn.end");
        world.sound().takeAway("The loudspeaker was taken away.");
        world.worker->run();
        const Outcome takenAway = world.result();
        QVERIFY(!takenAway);
        QCOMPARE(takenAway.error(), "The loudspeaker was taken away.");
        QVERIFY(world.completed.empty());

        CloudSpeechService silent(world.worker, nullptr);
        QVERIFY(!silent.makeSynthesizer(world.config));
        CloudSpeechService empty(world.worker, [] { return nullptr; });
        QVERIFY(!empty.makeSynthesizer(world.config).value()->speakText("x"));
    }

    void severalTextsAtOnceAreSeveralSounds()
    {
        World world;
        world.beginConnected("one");
        const auto first = std::move(world.outcome);
        const FakeSocket firstLink = world.link();
        const FakePlayback firstSound = world.sound();
        world.beginConnected("two");
        world.send("abcd");
        QVERIFY(firstSound.pcm().isEmpty());
        QVERIFY(firstLink.request().headers != world.link().request().headers);
        QVERIFY(world.synthesizer->stopSpeaking());
        first.wait();
        QVERIFY(firstSound.wasStopped());
        QCOMPARE(world.result()->cancellation.reason, CancellationReason::CancelledByUser);
    }

    void soundWithoutEndIsRefused()
    {
        World world;
        world.beginConnected();
        const QByteArray tenSeconds(480'000, 'a');
        for (int i = 0; i < 60; ++i)
            world.send(tenSeconds);
        QVERIFY(!world.isOver());
        world.send("ab");
        QCOMPARE(world.result()->cancellation.errorCode, Code::ServiceError);
    }

    void aSynthesiserMayBeDestroyedInItsOwnHandler()
    {
        World world;
        int calls = 0;
        world.synthesizer->synthesisCompleted = [&, own = std::make_shared<int>(7)](const auto &) {
            world.synthesizer.reset();
            calls += *own;
        };
        // The thread that speaks holds no reference: the object is gone while its call still blocks.
        auto *raw = world.synthesizer.get();
        world.outcome = std::async(std::launch::async, [raw] { return raw->speakText("Guten Tag"); });
        world.awaitConnection();
        world.deliver(websocket::Connected{});
        world.say("turn.end");
        world.sound().complete();
        world.worker->run();
        QCOMPARE(calls, 7);
        QCOMPARE(world.result()->reason, ResultReason::SynthesizingAudioCompleted);
    }
};

template struct vynlex::InSuite<TestSynthesis>;

#include "tst_synthesis.moc"

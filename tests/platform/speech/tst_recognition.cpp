#include <QRegularExpression>
#include <QTest>

#include <random>
#include <set>

#include "platform/speech/CloudSpeechService.h"
#include "tests/fakes/FakeSocketWorker.h"
#include "tests/fakes/Rows.h"
#include "tests/fakes/Secrets.h"
#include "tests/fakes/Suite.h"
#include "tests/platform/speech/WireMessage.h"

using namespace std::chrono_literals;
using namespace vynlex;
using Code = CancellationErrorCode;

namespace {

constexpr auto key = secrets::speechKey.data();
constexpr qint64 second = 16'000; // samples
const QString inactivity = "Due to service inactivity, the client buffer exceeded maximum size. Resetting the buffer.";

/// Sample `i` of the signal that every test sends. It does not repeat within minutes.
QByteArray signal(qint64 from, qint64 count)
{
    QByteArray pcm(2 * count, Qt::Uninitialized);
    for (qint64 i = 0; i < count; ++i) {
        const quint64 n = static_cast<quint64>(from + i);
        const auto value = static_cast<quint16>((n * 2'654'435'761U) >> 13);
        pcm[2 * i] = static_cast<char>(value & 0xff);
        pcm[2 * i + 1] = static_cast<char>(value >> 8);
    }
    return pcm;
}

std::int64_t ticks(qint64 samples)
{
    return samples * 625;
}

/// What the service received between one RIFF header and the next.
struct Turn {
    QByteArray id;
    QByteArray pcm;
    bool ended = false; ///< The empty audio message has come.
};

/// A recogniser with a scripted service at the other end.
struct World {
    std::shared_ptr<FakeSocketWorker> worker = std::make_shared<FakeSocketWorker>();
    CloudSpeechService service{worker, [] { return nullptr; }};
    SpeechConfig config = SpeechConfig::fromSubscription(key, "westeurope").value();
    PushAudioInputStream stream = PushAudioInputStream::create();
    std::shared_ptr<SpeechRecognizer> recognizer;
    std::vector<SpeechRecognitionResult> results;
    std::vector<CancellationDetails> cancellations;
    qint64 written = 0;

    World()
    {
        makeRecognizer();
        config.enableDictation(); // After the recogniser was made, as the kit does it.
    }
    void makeRecognizer()
    {
        recognizer = service.makeRecognizer(config, AudioConfig::fromStreamInput(stream)).value();
        recognizer->recognized = [this](const auto &result) { results.push_back(result); };
        recognizer->canceled = [this](const auto &details) { cancellations.push_back(details); };
    }

    void start()
    {
        QVERIFY(recognizer->startContinuousRecognition());
        worker->run();
    }
    void startConnected()
    {
        start();
        accept();
    }
    void accept()
    {
        link().connected();
        worker->run();
    }
    void lose(const WebSocketEvent &event = websocket::PeerClosed{})
    {
        link().deliver(event);
        worker->run();
    }
    /// Loses the connection and waits until the next one stands.
    void loseAndReconnect(const WebSocketEvent &event = websocket::PeerClosed{})
    {
        const auto before = connections();
        lose(event);
        while (connections() == before && cancellations.empty())
            worker->advance(10ms);
        accept();
    }

    void write(qint64 samples)
    {
        stream.write(signal(written, samples));
        written += samples;
        worker->run();
    }
    /// As a microphone writes: 10 ms of sound every 10 ms.
    void speak(std::chrono::milliseconds time)
    {
        for (auto passed = 0ms; passed < time; passed += 10ms) {
            write(second / 100);
            worker->advance(10ms);
        }
    }
    void close()
    {
        stream.close();
        worker->run();
    }

    FakeSocket link() const { return worker->lastSocket(); }
    std::size_t connections() const { return static_cast<std::size_t>(worker->socketCount()); }

    std::vector<WireMessage> messages(std::size_t connection) const
    {
        std::vector<WireMessage> all;
        for (const auto &sent : worker->socket(static_cast<int>(connection)).sent()) {
            all.push_back(readWire(sent));
            if (!all.back().error.isEmpty())
                qFatal("%s", qPrintable(all.back().error));
        }
        return all;
    }
    QStringList paths(std::size_t connection) const
    {
        QStringList all;
        for (const auto &message : messages(connection))
            all += message.path;
        return all;
    }

    std::vector<Turn> turns() const
    {
        std::vector<Turn> all;
        for (std::size_t i = 0; i < connections(); ++i) {
            for (const auto &message : messages(i)) {
                if (message.path != "audio")
                    continue;
                if (message.contentType == "audio/x-wav")
                    all.push_back({message.requestId, {}, false});
                else if (message.requestId != all.back().id || all.back().ended)
                    qFatal("audio outside its turn");
                else if (message.body.isEmpty())
                    all.back().ended = true;
                else
                    all.back().pcm += message.body;
            }
        }
        return all;
    }

    void say(const char *path, const QByteArray &body = "{}")
    {
        link().text(serviceText(path, turns().back().id, body));
        worker->run();
    }
    void phrase(const QByteArray &status, qint64 offset, qint64 duration, const QByteArray &text = "Text.")
    {
        say("speech.phrase",
            "{\"RecognitionStatus\":\"" + status + "\",\"Offset\":" + QByteArray::number(ticks(offset)) +
                ",\"Duration\":" + QByteArray::number(ticks(duration)) + ",\"DisplayText\":\"" + text + "\"}");
    }

    QString sessionId() const { return QString::fromLatin1(worker->socket(0).request().headers.at(1).second); }
};

void compareCancellation(const World &world, Code code, const QString &text)
{
    QCOMPARE(world.cancellations.size(), 1U);
    QCOMPARE(world.cancellations.front().reason, CancellationReason::Error);
    QCOMPARE(world.cancellations.front().errorDetails, text + " SessionId: " + world.sessionId());
    QCOMPARE(world.cancellations.front().errorCode, code);
}

websocket::Disconnected closes(std::uint16_t code, const QString &reason)
{
    return {reason, code};
}

websocket::Error refused(int status)
{
    return {{WebSocketError::Kind::UpgradeRefused, status, "refused"}};
}

} // namespace

Q_DECLARE_METATYPE(vynlex::WebSocketEvent)

class TestRecognition : public QObject {
    Q_OBJECT

private slots:
    void aWholeConversation()
    {
        World world;
        world.start();
        QCOMPARE(world.connections(), 1U);
        const WebSocketRequest request = world.link().request();
        QCOMPARE(request.url, QUrl("wss://westeurope.stt.speech.microsoft.com/speech/recognition/dictation/"
                                   "cognitiveservices/v1?language=en-US&format=simple"));
        QCOMPARE(request.connectTimeout, 20s);
        QCOMPARE(request.headers.size(), 2U);
        QCOMPARE(request.headers[0].first, "Ocp-Apim-Subscription-Key");
        QCOMPARE(request.headers[0].second, key);
        QCOMPARE(request.headers[1].first, "X-ConnectionId");
        QVERIFY(QRegularExpression("\\A[0-9a-f]{32}\\z").match(world.sessionId()).hasMatch());

        world.write(100); // Before the connection stands: kept.
        world.accept();
        world.write(3000);
        const auto sent = world.messages(0);
        QCOMPARE(world.paths(0), (QStringList{"speech.config", "speech.context", "audio", "audio", "audio", "audio"}));
        QCOMPARE(sent[0].json()["recognition"], "dictation");
        QVERIFY(sent[0].json()["context"].toObject()["system"].isObject());
        QCOMPARE(sent[1].json()["phraseDetection"].toObject()["mode"], "Dictation");
        QCOMPARE(sent[2].contentType, "audio/x-wav");
        QCOMPARE(sent[2].body.toHex(),
                 "524946460000000057415645666d74201000000001000100803e0000007d00000200100064617461"
                 "00000000");
        QCOMPARE(sent[3].contentType, "");
        QCOMPARE(sent[4].body.size(), 3200);
        for (const auto &message : sent)
            QCOMPARE(message.requestId, sent[0].requestId);

        world.say("turn.start", R"({"context":{"serviceTag":"e34f"}})");
        world.say("speech.startDetected", R"({"Offset":0})");
        world.say("speech.hypothesis", R"({"Text":"good morning","Offset":0,"Duration":10000})");
        QVERIFY(world.results.empty());
        world.phrase("Success", 100, 2000, "Good morning.");
        world.close();
        QCOMPARE(world.turns().size(), 1U);
        QCOMPARE(world.turns()[0].pcm, signal(0, 3100));
        QVERIFY(world.turns()[0].ended);
        world.phrase("EndOfDictation", 3100, 0, "");
        QVERIFY(world.cancellations.empty());
        world.say("turn.end");

        QCOMPARE(world.results.size(), 1U);
        QCOMPARE(world.results[0].reason, ResultReason::RecognizedSpeech);
        QCOMPARE(world.results[0].text, "Good morning.");
        QCOMPARE(world.results[0].offset.count(), ticks(100));
        QCOMPARE(world.results[0].duration.count(), ticks(2000));
        QCOMPARE(world.cancellations,
                 (std::vector{CancellationDetails{CancellationReason::EndOfStream, Code::NoError, {}}}));
        QCOMPARE(world.link().closing()->code, 1000);
        world.lose(websocket::Disconnected{});
        world.worker->advance(1h);
        QCOMPARE(world.cancellations.size(), 1U);
        QCOMPARE(world.connections(), 1U);
        QVERIFY(!world.link().isAlive());
        QCOMPARE(world.worker->runningTimers(), 0U);
    }

    void regionAndModeChooseTheAddress_data()
    {
        addRows<QString, QString, QString>({
            {"china", "chinaeast2", "wss://chinaeast2.stt.speech.azure.cn", "dictation"},
            {"government", "USGovArizona", "wss://usgovarizona.stt.speech.azure.us", "dictation"},
            {"conversation", "eastus", "wss://eastus.stt.speech.microsoft.com", "conversation"},
        });
    }
    void regionAndModeChooseTheAddress()
    {
        const auto [region, host, mode] = currentRow<QString, QString, QString>();
        World world;
        world.config = SpeechConfig::fromSubscription(key, region).value();
        world.makeRecognizer();
        world.config.setSpeechRecognitionLanguage("hi-IN");
        if (mode == "dictation")
            world.config.enableDictation();
        world.startConnected();
        QCOMPARE(world.link().request().url.toString(),
                 host + "/speech/recognition/" + mode + "/cognitiveservices/v1?language=hi-IN&format=simple");
        QCOMPARE(world.messages(0)[0].json()["recognition"], mode);
    }

    void aLostConnectionIsMadeAgainAndNothingIsLost_data()
    {
        addRows<WebSocketEvent>({
            {"reset", WebSocketEvent(websocket::PeerClosed{})},
            {"close 1011", WebSocketEvent(websocket::Disconnected{"Internal server error.", 1011})},
            {"another network path", WebSocketEvent(websocket::ReconnectSuggested{true})},
        });
    }
    void aLostConnectionIsMadeAgainAndNothingIsLost()
    {
        const auto [loss] = currentRow<WebSocketEvent>();
        World world;
        world.startConnected();
        world.speak(5s);
        world.phrase("Success", 0, 43'840, "First.");
        world.lose(loss);
        world.write(500); // While there is no connection.
        world.worker->advance(100ms);
        QCOMPARE(world.connections(), 2U);
        QVERIFY(!world.worker->socket(0).isAlive());
        world.accept();

        QCOMPARE(world.link().request().headers, world.worker->socket(0).request().headers);
        const auto turns = world.turns();
        QCOMPARE(turns[1].pcm, signal(43'840, world.written - 43'840));
    }

    /// Turns and connections end at random moments; phrases cover random stretches; the writer cuts where it likes.
    void everySampleIsCoveredOnceWhateverHappens()
    {
        std::mt19937 random(20'261'121); // NOLINT(bugprone-random-generator-seed): the same story each time
        const auto upTo = [&](qint64 limit) { return std::uniform_int_distribution<qint64>(0, limit)(random); };
        World world;
        world.startConnected();
        QByteArray covered;
        qint64 coveredInTurn = 0;
        qint64 offsetInSession = 0;
        std::size_t results = 0;
        std::size_t pastTurns = 0;
        const auto cover = [&](qint64 samples) {
            const Turn turn = world.turns().back();
            const qint64 from = coveredInTurn + upTo(samples / 2);
            const qint64 to = coveredInTurn + samples;
            world.phrase("Success", from, to - from);
            covered += turn.pcm.mid(2 * coveredInTurn, 2 * samples);
            QCOMPARE(world.results.size(), ++results);
            QCOMPARE(world.results.back().offset.count(), ticks(offsetInSession + from));
            coveredInTurn = to;
        };
        const auto nextTurn = [&] {
            offsetInSession += coveredInTurn;
            coveredInTurn = 0;
            pastTurns = world.turns().size();
        };
        QByteArray all;
        for (int step = 0; step < 400; ++step) {
            const QByteArray piece = signal(world.written, upTo(2000));
            world.written += piece.size() / 2;
            all += piece;
            const qsizetype cut = upTo(piece.size()); // Odd cuts too.
            world.stream.write(piece.left(cut));
            world.stream.write(piece.mid(cut));
            world.worker->advance(std::chrono::milliseconds(upTo(200)));
            const auto turns = world.turns();
            if (turns.size() == pastTurns)
                continue;
            const qint64 uncovered = turns.back().pcm.size() / 2 - coveredInTurn;
            if (uncovered > 3000 && upTo(3) == 0)
                cover(1 + upTo(uncovered - 1));
            else if (coveredInTurn > 0 && upTo(19) == 0) {
                nextTurn();
                world.say("turn.end");
            } else if (coveredInTurn > 0 && upTo(19) == 0) {
                nextTurn();
                world.loseAndReconnect();
            }
            if (QTest::currentTestFailed())
                return;
        }
        world.close();
        world.worker->advance(19s);
        const Turn last = world.turns().back();
        QVERIFY(last.ended);
        cover(last.pcm.size() / 2 - coveredInTurn);
        QVERIFY(covered == all);
        QVERIFY(world.turns().size() > 10);
        QVERIFY(world.connections() > 3);
        std::set<QByteArray> ids;
        for (const Turn &turn : world.turns())
            ids.insert(turn.id);
        QCOMPARE(ids.size(), world.turns().size());
        qsizetype contexts = 0;
        for (std::size_t i = 0; i < world.connections(); ++i) {
            contexts += world.paths(i).count("speech.context");
            QCOMPARE(world.paths(i).count("speech.config"), 1);
        }
        QCOMPARE(static_cast<std::size_t>(contexts), world.turns().size());
    }

    void aConnectionLostAfterTheEndOfTheAudioReplaysTheRestAndTheEnd()
    {
        World world;
        world.startConnected();
        world.write(10'000);
        world.close();
        world.phrase("Success", 0, 4000);
        world.loseAndReconnect();
        QCOMPARE(world.turns().back().pcm, signal(4000, 6000));
        QVERIFY(world.turns().back().ended);

        // Once phrases cover it all, there is nothing to connect for.
        world.phrase("Success", 0, 6000);
        world.lose();
        world.worker->advance(1min);
        QCOMPARE(world.connections(), 2U);
        QCOMPARE(world.cancellations.size(), 1U);
        QCOMPARE(world.cancellations[0].reason, CancellationReason::EndOfStream);
    }

    void aStreamThatEndsWithoutASampleIsToldToTheService()
    {
        World world;
        world.close();
        world.startConnected();
        QVERIFY(world.turns().at(0).ended);
        world.say("turn.end");
        QCOMPARE(world.cancellations.at(0).reason, CancellationReason::EndOfStream);
    }

    void messagesThatAreNotForTheTurnAreSkipped()
    {
        World world;
        world.startConnected();
        world.speak(2s);
        const QByteArray first = world.turns().back().id;
        world.phrase("Success", 0, 16'000, "First.");
        world.say("turn.end");
        world.speak(1s);
        const QByteArray body = R"({"RecognitionStatus":"Success","Offset":0,"Duration":1,"DisplayText":"No."})";
        const QByteArray id = world.turns().back().id;
        const std::vector<WebSocketEvent> strays{
            websocket::Text{serviceText("speech.phrase", first, body)},
            websocket::Text{serviceText("turn.end", first)},
            websocket::Text{serviceText("speech.phrase", QByteArray(32, '0'), body)},
            websocket::Text{serviceText("some.day", id, "not json")},
            websocket::Text{"Path: speech.phrase\r\n\r\n" + body}, // no request id
            websocket::Binary{QByteArray::fromHex("ffff50")},
            websocket::Ping{},
            websocket::ViabilityChanged{false},
        };
        for (const auto &stray : strays)
            world.link().deliver(stray);
        world.worker->run();
        QCOMPARE(world.results.size(), 1U);
        QVERIFY(world.cancellations.empty());
        QCOMPARE(world.turns().size(), 2U);

        // Other cases, no blank, other order, a binary frame, several lines and an empty one: all are for the turn.
        const QByteArray block = "x-requestid:" + id.toUpper() + "\r\nPATH:Speech.Phrase\r\n";
        const QByteArray printed = "{\r\n\r\n \"RecognitionStatus\": 0,\r\n \"DisplayText\": \"नमस्ते\"\r\n}";
        world.link().text(block + "\r\n" + printed);
        world.link().binary(QByteArray(1, 0) + static_cast<char>(block.size()) + block + printed);
        QCOMPARE(world.results.size(), 3U);
        QCOMPARE(world.results[1].text, QString::fromUtf8("नमस्ते"));
        QCOMPARE(world.results[1].offset.count(), ticks(16'000));
        QCOMPARE(world.results[2].text, world.results[1].text);
    }

    void aPhraseBecomesAResultOrTheEnd_data()
    {
        const QString internal = "The speech service encountered an internal error and could not continue.";
        const Code serviceError = Code::ServiceError;
        addRows<QByteArray, int, QString, Code>({
            {"success", R"({"RecognitionStatus":"Success","DisplayText":"Hi.","Offset":1,"Duration":2})", 1, "Hi.",
             Code::NoError},
            {"empty text", R"({"RecognitionStatus":"Success","DisplayText":""})", 1, "", Code::NoError},
            {"detailed", R"({"RecognitionStatus":"Success","NBest":[{"Display":"Hi."}]})", 1, "Hi.", Code::NoError},
            {"no match", R"({"RecognitionStatus":"NoMatch","DisplayText":"x"})", 1, "", Code::NoError},
            {"silence", R"({"RecognitionStatus":"InitialSilenceTimeout"})", 1, "", Code::NoError},
            {"end of dictation", R"({"RecognitionStatus":"EndOfDictation"})", 0, "", Code::NoError},
            {"error", R"({"RecognitionStatus":"Error"})", 0, internal, serviceError},
            {"no json", "{\"RecognitionStatus", 0, internal, serviceError},
            {"too many", R"({"RecognitionStatus":"TooManyRequests"})", 0,
             "The number of parallel requests exceeded the number of allowed concurrent transcriptions.",
             Code::TooManyRequests},
            {"forbidden", R"({"RecognitionStatus":"Forbidden"})", 0,
             "The recognizer is using a free subscription that ran out of quota.", Code::Forbidden},
        });
    }
    void aPhraseBecomesAResultOrTheEnd()
    {
        const auto [body, results, text, error] = currentRow<QByteArray, int, QString, Code>();
        World world;
        world.startConnected();
        world.write(1000);
        world.say("speech.phrase", body);
        QCOMPARE(static_cast<int>(world.results.size()), results);
        if (results == 1) {
            QCOMPARE(world.results[0].text, text);
            QCOMPARE(world.results[0].reason,
                     body.contains("Success") ? ResultReason::RecognizedSpeech : ResultReason::NoMatch);
            QVERIFY(world.results[0].offset >= Ticks::zero() && world.results[0].duration >= Ticks::zero());
        }
        if (error == Code::NoError) {
            QVERIFY(world.cancellations.empty());
            return;
        }
        compareCancellation(world, error, text);
        QCOMPARE(world.link().closing()->code, 1000);
        world.say("speech.phrase", R"({"RecognitionStatus":"Success","DisplayText":"late"})");
        QVERIFY(world.results.empty());
    }

    void aConnectionThatFailsIsTriedAgainOrCancels_data()
    {
        using Kind = WebSocketError::Kind;
        const QString authentication = "WebSocket upgrade failed: Authentication error (%1). Please check subscription "
                                       "information and region name.";
        const QString unspecified = "WebSocket upgrade failed: Unspecified connection error (%1).";
        const QString none = "Connection failed (no connection to the remote host). Internal error: 1. Error details: "
                             "Failed with error: WS_OPEN_ERROR_UNDERLYING_IO_OPEN_FAILED\n"
                             "wss://westeurope.stt.speech.microsoft.com/speech/recognition/dictation/"
                             "cognitiveservices/v1?language=en-US&format=simple\nX-ConnectionId: {id}";
        const QString closed = "Connection was closed by the remote host. Error code: %1. Error details: %2";
        const QString broken = "WebSocket operation failed. Internal error: 3. Error details: "
                               "WS_ERROR_UNDERLYING_IO_ERROR";
        addRows<WebSocketEvent, bool, int, Code, QString>({
            {"401", refused(401), false, 1, Code::AuthenticationFailure, authentication.arg(401)},
            {"400", refused(400), false, 1, Code::BadRequest,
             "WebSocket upgrade failed: Bad request (400). Please verify the provided subscription details and "
             "language information."},
            {"404", refused(404), false, 1, Code::ConnectionFailure, unspecified.arg(404)},
            {"429", refused(429), false, 5, Code::TooManyRequests, unspecified.arg(429)},
            {"500", refused(500), false, 5, Code::ServiceError, unspecified.arg(500)},
            {"503", refused(503), false, 5, Code::ServiceUnavailable, unspecified.arg(503)},
            {"unknown host", websocket::Error{{Kind::HostNotFound, 0, ""}}, false, 5, Code::ConnectionFailure, none},
            {"no answer", websocket::Error{{Kind::Timeout, 0, ""}}, false, 5, Code::ServiceTimeout, none},
            {"close 1000", closes(1000, ""), true, 5, Code::ConnectionFailure, closed.arg(1000).arg("")},
            {"close 1002", closes(1002, "Malformed."), true, 1, Code::ConnectionFailure,
             closed.arg(1002).arg("Malformed.")},
            {"close 1007", closes(1007, "Quota"), true, 1, Code::BadRequest, closed.arg(1007).arg("Quota")},
            {"close 4000", closes(4000, "100%1 odd"), true, 1, Code::ConnectionFailure,
             closed.arg(4000).arg("100%1 odd")},
            {"close 4429", closes(4429, "throttled"), true, 5, Code::TooManyRequests,
             closed.arg(4429).arg("throttled")},
            {"reset", websocket::PeerClosed{}, true, 5, Code::ConnectionFailure, broken},
        });
    }
    void aConnectionThatFailsIsTriedAgainOrCancels()
    {
        auto [event, established, connections, code, text] = currentRow<WebSocketEvent, bool, int, Code, QString>();
        World world;
        world.start();
        world.write(1000);
        for (int i = 1; world.cancellations.empty(); ++i) {
            QCOMPARE(static_cast<int>(world.connections()), i);
            if (established)
                world.accept();
            world.lose(event);
            world.worker->advance(5s);
        }
        QCOMPARE(static_cast<int>(world.connections()), connections);
        compareCancellation(world, code, text.replace("{id}", world.sessionId()));
        world.worker->advance(1h);
        QCOMPARE(static_cast<int>(world.connections()), connections);
    }

    void pausesGrowUntilAPhraseCoversAudio()
    {
        World world;
        world.startConnected();
        world.write(10 * second);
        const auto pauseAfterLoss = [&] {
            const auto before = world.connections();
            const auto lost = world.worker->now();
            world.lose();
            while (world.connections() == before)
                world.worker->advance(1ms);
            world.accept();
            return world.worker->now() - lost;
        };
        for (const auto pause : {100ms, 500ms, 2000ms, 5000ms})
            QCOMPARE(pauseAfterLoss(), pause);
        world.phrase("NoMatch", 0, 1000);
        QCOMPARE(pauseAfterLoss(), 100ms);
        world.phrase("NoMatch", 0, 0); // Covers nothing: does not count.
        QCOMPARE(pauseAfterLoss(), 500ms);
        QVERIFY(world.cancellations.empty());
    }

    void aSilentServiceIsGivenUp_data()
    {
        addRows<bool, int, QString>({
            {"no turn.start", false, 10, inactivity},
            {"no turn.end", true, 20, "Timeout while waiting for service to stop"},
        });
    }
    void aSilentServiceIsGivenUp()
    {
        const auto [audioEnds, limitSeconds, text] = currentRow<bool, int, QString>();
        World world;
        world.start();
        world.write(1000);
        if (audioEnds)
            world.close();
        for (std::size_t i = 1; i <= 5; ++i) {
            QCOMPARE(world.connections(), i);
            world.accept();
            if (audioEnds) { // The limit runs from the service's last word.
                world.worker->advance(15s);
                world.say("turn.start");
            }
            world.worker->advance(std::chrono::seconds(limitSeconds) - 1ms);
            QVERIFY(world.link().isAlive());
            world.worker->advance(1ms);
            world.worker->advance(5s);
        }
        compareCancellation(world, Code::ServiceTimeout, text);
    }

    void aServiceThatNeverCoversTheAudioIsGivenUpAtThreeMinutes()
    {
        World world;
        world.startConnected();
        for (int i = 0; i < 180; ++i) {
            world.write(second);
            if (i == 0)
                world.say("turn.start");
            world.worker->advance(1s);
        }
        QVERIFY(world.cancellations.empty());
        world.write(second / 10);
        world.worker->advance(1s);
        compareCancellation(world, Code::ServiceTimeout, inactivity);
        world.write(second); // The microphone knows nothing of it.
        QCOMPARE(world.cancellations.size(), 1U);
    }

    void audioThatCannotBeSentIsKeptForTenMinutes()
    {
        World world;
        world.start();
        world.write(600 * second);
        QVERIFY(world.cancellations.empty());
        world.write(1);
        QCOMPARE(world.cancellations.size(), 1U);
        QCOMPARE(world.cancellations[0].errorCode, Code::ServiceTimeout);
        QCOMPARE(world.link().closing()->code, 1000);
    }

    void aServiceThatEndsEveryTurnAtOnceIsSlowedDownAndGivenUp()
    {
        World world;
        world.startConnected();
        const auto begun = world.worker->now();
        world.write(2 * second);
        std::size_t turns = 0;
        while (world.cancellations.empty()) {
            world.worker->advance(10ms);
            world.write(second / 100);
            if (world.turns().size() > turns) {
                ++turns;
                world.phrase("Success", 0, 0, "Again.");
                world.say("turn.end");
            }
        }
        QCOMPARE(turns, 7U);
        QVERIFY(world.worker->now() - begun >= 7850ms);
        compareCancellation(world, Code::ServiceTimeout, inactivity);
    }

    void longSilenceIsNotALoop()
    {
        World world;
        world.startConnected();
        for (int i = 0; i < 12; ++i) { // more than the hasty turns that are forgiven
            world.speak(5s);
            const auto heard = world.turns().back().pcm.size() / 2;
            world.phrase("InitialSilenceTimeout", 0, heard);
            world.say("turn.end");
        }
        QVERIFY(world.cancellations.empty());
        QCOMPARE(world.connections(), 1U);
        QCOMPARE(world.results.back().reason, ResultReason::NoMatch);
        world.close();
        world.say("turn.end");
        QCOMPARE(world.cancellations.at(0).reason, CancellationReason::EndOfStream);
    }

    void anAvalancheOfAudioIsSentAtTwiceItsSpeedAfterFiveSeconds()
    {
        World world;
        world.startConnected();
        world.write(25 * second);
        QCOMPARE(world.turns().back().pcm.size(), 5 * second * 2);
        world.say("turn.start");
        world.close();
        for (auto passed = 10ms; passed <= 10s; passed += 10ms) {
            world.worker->advance(10ms);
            const auto sent = std::chrono::milliseconds(world.turns().back().pcm.size() / 32);
            QVERIFY(sent <= 5s + 2 * passed);
            QVERIFY(sent >= 5s + 2 * passed - 200ms);
        }
        world.worker->advance(100ms);
        QCOMPARE(world.turns().back().pcm, signal(0, 25 * second));
        QVERIFY(world.turns().back().ended);
    }

    void aKeyThatNoHeaderCanCarryIsRefusedWithoutAsking()
    {
        World world;
        world.config = SpeechConfig::fromSubscription("abc\r\nX-Evil: 1", "westeurope").value();
        world.makeRecognizer();
        world.start();
        QVERIFY(world.connections() == 0);
        QCOMPARE(world.cancellations.at(0).errorCode, Code::AuthenticationFailure);
        QVERIFY(!world.cancellations.at(0).errorDetails.contains("X-Evil"));
    }
};

template struct vynlex::InSuite<TestRecognition>;

#include "tst_recognition.moc"

#include "MemoryConnection.h"
#include "ScriptedEngines.h"

#include "sandbox/speech/SpeechMessage.h"
#include "sandbox/speech/SpeechRoutes.h"

#include <QTest>

#include <boost/asio/co_spawn.hpp>
#include <boost/asio/detached.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/json/array.hpp>
#include <boost/json/parse.hpp>

#include <algorithm>
#include <functional>
#include <stdexcept>

#include "tests/fakes/Rows.h"

using namespace sandbox;
using namespace sandbox::test;
using namespace std::chrono_literals;
using namespace vynlex;
namespace json = boost::json;

namespace {

const std::string first(32, 'a');
const std::string second(32, 'b');
constexpr std::string_view dictation = "/speech/recognition/dictation/cognitiveservices/v1";
constexpr std::string_view interactive = "/speech/recognition/interactive/cognitiveservices/v1";
constexpr std::string_view universal = "/stt/speech/universal/v2";
constexpr std::string_view synthesis = "/tts/cognitiveservices/websocket/v1";
const std::string wave("RIFF\0\0\0\0WAVEfmt \x10\0\0\0\1\0\1\0\x80\x3e\0\0\0\x7d\0\0\2\0\x10\0data\0\0\0\0", 44);
constexpr std::size_t chunk = 3200; // bytes of 100 ms

/// JSON, written with single quotation marks.
std::string quoted(std::string text)
{
    std::ranges::replace(text, '\'', '"');
    return text;
}

RecognisedPhrase phrase(std::string text, Ticks offset = 0ms, Ticks duration = 1s)
{
    return {std::move(text), offset, duration, 0.9};
}

/// One connection to a service on scripted engines.
class Conversation {
public:
    ~Conversation()
    {
        connection->hangUp();
        gate.open();
        run([this] { return over; });
    }

    std::shared_ptr<ScriptedEngines> engines = std::make_shared<ScriptedEngines>();
    Gate gate; ///< opened at the end, so that no voice waits for ever
    boost::asio::io_context io;
    boost::asio::thread_pool workers{2};
    ServerContext context{{}, {}, {}, workers};
    std::chrono::milliseconds connectionLimit = 10min;
    std::shared_ptr<MemoryConnection> connection = std::make_shared<MemoryConnection>(io);
    bool over = false;

    void open(std::string_view path, std::string_view query = "language=hi-IN&format=simple")
    {
        addSpeechRoutes(
            std::make_shared<SpeechService>(SpeechService{context, {{"key"}, {}}, engines, connectionLimit}));
        if (!fault.empty())
            context.faults.add({json::parse(fault)});
        const std::string host = path == synthesis ? "here.tts.speech.microsoft.com" : "here.stt.speech.microsoft.com";
        const auto *const handler = context.router.findWebSocket(host, path);
        QVERIFY(handler);
        request.target(std::string(path).append("?").append(query));
        boost::asio::co_spawn(io, handler->serve(connection, request),
                              [this](const std::exception_ptr &) { over = true; });
    }
    std::string fault; ///< JSON

    // What the client says.
    void text(const std::string &path, const std::string &id, const std::string &body)
    {
        connection->say({false, head(path, id) + "\r\n" + body});
    }
    void audio(const std::string &id, const std::string &body)
    {
        const auto block = head("audio", id);
        std::string data{static_cast<char>(block.size() >> 8), static_cast<char>(block.size() & 0xff)};
        connection->say({true, data + block + body});
    }
    void config() { text("speech.config", first, quoted("{'context':{'system':{}}}")); }
    void beginTurn(const std::string &id)
    {
        text("speech.context", id, "{}");
        audio(id, wave);
    }
    void sound(const std::string &id, int chunks)
    {
        for (int i = 0; i < chunks; ++i)
            audio(id, std::string(chunk, '\0'));
    }
    /// A whole turn, of so many chunks.
    void dictate(const std::string &id, int chunks)
    {
        beginTurn(id);
        sound(id, chunks);
        audio(id, "");
    }
    void speak(const std::string &id, const std::string &words)
    {
        text("synthesis.context", id,
             quoted("{'synthesis':{'audio':{'metadataOptions':{'wordBoundaryEnabled':'true','sessionEndEnabled':true},'"
                    "outputFormat':'raw-16khz-16bit-mono-pcm'}}}"));
        text("ssml", id, "<speak version='1.0'><voice name='V'>" + words + "</voice></speak>");
    }

    /// Runs until it is so, or the connection is over.
    template<class Predicate> void run(Predicate isSo)
    {
        const auto work = boost::asio::make_work_guard(io);
        while (!isSo() && !over) {
            if (io.run_one_for(30s) == 0)
                throw std::runtime_error("the service does nothing");
        }
    }
    /// All that was said is handled, and the service has nothing more to say.
    void runToTheEnd()
    {
        text("telemetry", first, "{}");
        connection->hangUpWhenAllIsRead();
        run([this] { return over; });
    }
    /// A connection with one turn, from its begin to its end.
    void dictateOnce(int chunks)
    {
        open(dictation);
        config();
        dictate(first, chunks);
        runToTheEnd();
    }
    void runUntil(const std::string &entry, std::size_t times = 1)
    {
        run([&] { return static_cast<std::size_t>(told().count(QString::fromStdString(entry))) >= times; });
    }

    /// What the service has sent, in short: paths, with the status of phrases and the size of audio.
    QStringList told() const
    {
        QStringList all;
        for (const auto &message : connection->sent) {
            const auto [path, requestId, body] = parts(message);
            QString entry = QString::fromStdString(path);
            if (path == "speech.phrase")
                entry = QString::fromStdString(field(body, "RecognitionStatus"));
            else if (message.binary)
                entry += QStringLiteral(" %1").arg(body.size());
            all << entry;
        }
        return all;
    }
    json::object bodyOf(int index) const
    {
        return json::parse(parts(connection->sent.at(static_cast<std::size_t>(index))).body).as_object();
    }
    QString wordOf(int index, const char *key) const
    {
        return QString::fromStdString(std::string(bodyOf(index).at(key).as_string()));
    }
    std::string idOf(int index) const { return parts(connection->sent.at(static_cast<std::size_t>(index))).requestId; }
    int closeCode() const { return connection->closed ? connection->closed->code : -1; }

private:
    static std::string head(const std::string &path, const std::string &id)
    {
        return "Path: " + path + "\r\nX-RequestId: " + id + "\r\nX-Timestamp: 2026-11-21T07:23:30.048Z\r\n";
    }

    struct Parts {
        std::string path;
        std::string requestId;
        std::string body;
    };
    static Parts parts(const WebSocketMessage &message)
    {
        const auto &data = message.data;
        const auto size = message.binary
                              ? static_cast<unsigned char>(data[0]) * 256U + static_cast<unsigned char>(data[1])
                              : data.find("\r\n\r\n") + 2;
        const auto block = data.substr(message.binary ? 2 : 0, size);
        const auto header = [&](const std::string &name) {
            const auto at = block.find(name + ":") + name.size() + 1;
            return block.substr(at, block.find("\r\n", at) - at);
        };
        return {header("Path"), header("X-RequestId"), data.substr(size + 2)};
    }
    static std::string field(const std::string &body, const char *name)
    {
        boost::system::error_code error;
        const auto value = json::parse(body, error);
        return error ? "garbled" : std::string(value.as_object().at(name).as_string());
    }

    HttpRequest request;
};

using Say = std::function<void(Conversation &)>; ///< what a client says

} // namespace

class SpeechSessionsTest : public QObject {
    Q_OBJECT

private slots:
    void dictationGoesFromTurnStartToTurnEnd()
    {
        Conversation c;
        c.engines->script = {
            {1600, {SpeechStarted{100ms}}},
            {3200, {Hypothesis{"namaste", 100ms, 100ms}}},
            {4800, {SpeechEnded{300ms}, phrase("नमस्ते।", 100ms, 200ms)}},
        };
        c.dictateOnce(4);
        QCOMPARE(c.told(), QStringList({"turn.start", "speech.startDetected", "speech.hypothesis", "Success",
                                        "speech.endDetected", "EndOfDictation", "turn.end"}));
        QCOMPARE(c.bodyOf(1).at("Offset").as_int64(), std::int64_t{1'000'000});
        QCOMPARE(c.wordOf(2, "Text"), QString("namaste"));
        QCOMPARE(c.wordOf(3, "DisplayText"), QString("नमस्ते।"));
        QCOMPARE(c.bodyOf(3).at("Duration").as_int64(), std::int64_t{2'000'000});
        QVERIFY(!c.bodyOf(3).contains("NBest"));
        QCOMPARE(c.bodyOf(5).at("Offset").as_int64(), std::int64_t{4'000'000});
        QVERIFY(!c.bodyOf(5).contains("DisplayText"));
        for (int i = 0; i < 7; ++i)
            QCOMPARE(c.idOf(i), first);
        QCOMPARE(c.engines->locales, std::vector<std::string>{"hi-IN"});
        QCOMPARE(c.closeCode(), -1);
    }

    void detailedPhrasesHaveAlternatives()
    {
        Conversation c;
        c.engines->script = {{1600, {phrase("Good morning, Sir.")}}};
        c.open(dictation, "language=en-US&format=detailed");
        c.config();
        c.beginTurn(first);
        c.sound(first, 1);
        c.runToTheEnd();
        const auto best = c.bodyOf(1).at("NBest").as_array().at(0).as_object();
        QVERIFY(best.at("Display") == json::value("Good morning, Sir."));
        QVERIFY(best.at("Lexical") == json::value("good morning sir"));
    }

    void whatIsLeftAtTheEndOfAudioIsNoUtterance()
    {
        for (const bool understood : {true, false}) {
            Conversation c;
            if (understood)
                c.engines->script = {{1600, {phrase("नमस्ते।")}}};
            c.engines->atEnd = {phrase("")};
            c.dictateOnce(2);
            QCOMPARE(c.told().filter("Success").size(), understood ? 1 : 0);
            QCOMPARE(c.told().filter("NoMatch").size(), understood ? 0 : 1); // all that was said
            QCOMPARE(c.told().filter("EndOfDictation").size(), 1);
        }
    }

    void interactiveModeEndsWithOnePhrase()
    {
        for (const auto &[path, mode] : {std::pair{interactive, "Dictation"}, {universal, "Interactive"}}) {
            Conversation c;
            c.engines->script = {{1600, {SpeechEnded{100ms}, phrase("नमस्ते।"), SpeechStarted{100ms}}}};
            c.open(path);
            c.config();
            c.text("speech.context", first, quoted("{'phraseDetection':{'mode':'" + std::string(mode) + "'}}"));
            c.audio(first, wave);
            c.sound(first, 5);
            c.audio(first, "");
            c.runToTheEnd();
            QCOMPARE(c.told(), QStringList({"turn.start", "speech.endDetected", "Success", "turn.end"}));
        }
    }

    void silenceBeforeSpeechIsReported_data()
    {
        const QStringList once{"turn.start", "InitialSilenceTimeout"};
        const QByteArray dictating(dictation.data());
        const QByteArray asking(interactive.data());
        addRows<QByteArray, QByteArray, int, QStringList>({
            {"dictation, 15 s", dictating, {}, 299, once},
            {"interactive, 5 s", asking, {}, 200, once + QStringList("turn.end")},
            {"as asked for", dictating, "&initialSilenceTimeoutMs=1000", 10, once},
        });
    }
    void silenceBeforeSpeechIsReported()
    {
        const auto [path, query, chunks, told] = currentRow<QByteArray, QByteArray, int, QStringList>();
        Conversation c;
        c.open(path.toStdString(), "language=hi-IN" + query.toStdString());
        c.config();
        c.beginTurn(first);
        c.sound(first, chunks);
        c.runToTheEnd();
        QCOMPARE(c.told(), told);
    }

    void aConnectionCarriesTurnAfterTurn()
    {
        Conversation c;
        c.open(dictation);
        c.config();
        c.dictate(first, 1);
        c.sound(first, 2); // late
        c.audio(first, "");
        c.beginTurn(second);
        for (int i = 0; i < 3; ++i)
            c.audio(second, std::string(chunk + 1, '\0')); // odd
        c.audio(second, "");
        c.runToTheEnd();
        const QStringList turn{"turn.start", "speech.endDetected", "EndOfDictation", "turn.end"};
        QCOMPARE(c.told(), turn + turn);
        QCOMPARE(c.idOf(7), second);
        QCOMPARE(c.bodyOf(5).at("Offset").as_int64(), std::int64_t{4801} * 625);
        QCOMPARE(c.engines->heard, (std::vector<std::int64_t>{1600, 4801}));
    }

    void recognitionFailsAsAskedFor_data()
    {
        const QStringList all{"turn.start", "Success", "Success", "speech.endDetected", "EndOfDictation", "turn.end"};
        addRows<QByteArray, QStringList, int>({
            {"drop", "'drop'", all.mid(0, 5), -1},
            {"silence", "'silence'", {"turn.start"}, -1},
            {"early end by phrases",
             "'endEarly','afterPhrases':1",
             {"turn.start", "Success", "speech.endDetected", "turn.end"},
             -1},
            {"status", "'status','status':'TooManyRequests'", {"turn.start", "TooManyRequests", "turn.end"}, -1},
            {"garbled",
             "'garbledPhrase'",
             {"turn.start", "garbled", "garbled", "speech.endDetected", "EndOfDictation", "turn.end"},
             -1},
            {"close", "'close','code':1012,'afterPhrases':2", all.mid(0, 3), 1012},
            {"reset", "'reset','afterMs':200", all.mid(0, 2), 0},
        });
    }
    void recognitionFailsAsAskedFor()
    {
        const auto [fault, told, code] = currentRow<QByteArray, QStringList, int>();
        Conversation c;
        c.engines->script = {{1600, {phrase("one")}}, {3200, {phrase("two")}}};
        c.fault = quoted("{'point':'recognition.turn','times':1,'kind':" + fault.toStdString() + "}");
        c.dictateOnce(3);
        QCOMPARE(c.told(), told);
        QCOMPARE(c.closeCode(), code);
    }

    void theRestAfterAnEarlyEndIsNoUtterance()
    {
        Conversation c;
        c.engines->script = {{1600, {phrase("one")}}};
        c.engines->atEnd = {phrase("")};
        c.fault = quoted("{'point':'recognition.turn','times':1,'kind':'endEarly','afterPhrases':1}");
        c.open(dictation);
        c.config();
        c.beginTurn(first);
        c.sound(first, 1);
        c.dictate(second, 0);
        c.runToTheEnd();
        QCOMPARE(c.told().filter("NoMatch"), QStringList());
        QCOMPARE(c.told().last(), QString("turn.end"));
    }

    void audioGoesOutWhileTheVoiceStillSpeaks()
    {
        Conversation c;
        c.engines->voice = [&c](const std::string &, const VoiceBank::Sink &sink) {
            sink(std::vector<std::int16_t>(1000));
            sink(std::vector<std::int16_t>(1000)); // 4000 bytes: one message and a rest
            c.gate.pass();
            sink(std::vector<std::int16_t>(1601));
        };
        c.open(synthesis, "");
        c.config();
        c.speak(first, "Hello");
        c.runUntil("audio 3200");
        QCOMPARE(c.told(), QStringList({"turn.start", "response", "audio 3200"}));
        c.gate.open();
        c.runUntil("turn.end");
        QCOMPARE(c.told(), QStringList({"turn.start", "response", "audio 3200", "audio 3200", "audio 802",
                                        "audio.metadata", "turn.end"}));
        QVERIFY(c.bodyOf(0).at("context") == c.bodyOf(1).at("context"));
        const auto streamId = std::string(c.bodyOf(1).at("audio").at("streamId").as_string());
        QVERIFY(c.connection->sent[2].data.find("X-StreamId:" + streamId + "\r\n") != std::string::npos);
        const auto end = c.bodyOf(5).at("Metadata").at(0);
        QVERIFY(end.at("Type") == json::value("SessionEnd"));
        QCOMPARE(end.at("Data").at("Offset").as_int64(), std::int64_t{3601} * 625);
    }

    void aStopEndsTheTurnWithTheAudioSoFar()
    {
        Conversation c;
        c.engines->voice = [&c](const std::string &text, const VoiceBank::Sink &sink) {
            if (text == "short") {
                sink(std::vector<std::int16_t>(100));
                return;
            }
            sink(std::vector<std::int16_t>(1600));
            c.gate.pass();
            while (sink(std::vector<std::int16_t>(1600))) {
            }
        };
        c.open(synthesis, "");
        c.config();
        c.speak(first, "for ever");
        c.runUntil("audio 3200");
        c.text("synthesis.control", second, quoted("{'action':'stop'}")); // of another request: nothing
        c.text("synthesis.control", first, quoted("{'action':'stop'}"));
        c.speak(second, "short");
        c.run([&] { return c.connection->allRead(); });
        c.gate.open();
        c.runUntil("turn.end", 2);
        QCOMPARE(c.told(), QStringList({"turn.start", "response", "audio 3200", "audio.metadata", "turn.end",
                                        "turn.start", "response", "audio 200", "audio.metadata", "turn.end"}));
    }

    void whatTheProtocolForbidsEndsTheConnection_data()
    {
        const auto context = [](const std::string &body) {
            return [body](Conversation &c) { c.config(), c.text("synthesis.context", first, body); };
        };
        const auto ssml = [](const char *body) {
            return [body](Conversation &c) {
                c.config(), c.text("synthesis.context", first, "{}"), c.text("ssml", first, body);
            };
        };
        const QByteArray listening(dictation.data());
        const QByteArray speaking(synthesis.data());
        addRows<QByteArray, Say, int, QByteArray>({
            {"audio without configuration", listening, [](Conversation &c) { c.beginTurn(first); }, 1002, {}},
            {"audio without RIFF header", listening, [](Conversation &c) { c.config(), c.sound(first, 1); }, 1007, {}},
            {"too much audio at once",
             listening,
             [](Conversation &c) { c.config(), c.beginTurn(first), c.audio(first, std::string(8193, 'x')); },
             1007,
             {}},
            {"request id of an ended turn",
             listening,
             [](Conversation &c) { c.config(), c.dictate(first, 0), c.text("speech.context", first, "{}"); },
             1002,
             {}},
            {"a broken recogniser",
             listening,
             [](Conversation &c) { c.engines->broken = true, c.config(), c.dictate(first, 1); },
             1011,
             {}},
            {"a text without configuration", speaking, [](Conversation &c) { c.speak(first, "Hi"); }, 1002, {}},
            {"unknown voice", speaking, ssml("<speak><voice name='xx-XX-NoNeural'>Hi</voice></speak>"), 1007,
             "Unsupported voice xx-XX-NoNeural."},
            {"not well-formed", speaking, ssml("<speak><voice name='V'>a & b</voice></speak>"), 1007,
             "Invalid SSML: not well-formed (invalid token) in line 1."},
            {"another format", speaking,
             context(quoted("{'synthesis':{'audio':{'outputFormat':'audio-24khz-48kbitrate-mono-mp3'}}}")), 1007,
             "Unsupported output format audio-24khz-48kbitrate-mono-mp3."},
            {"request id used again",
             speaking,
             [](Conversation &c) { c.config(), c.speak(first, "a"), c.speak(first, "a"); },
             1002,
             {}},
            {"audio to a voice", speaking, [](Conversation &c) { c.config(), c.audio(first, wave); }, 1002, {}},
            {"a broken voice", speaking, [](Conversation &c) { c.config(), c.speak(first, "hoarse"); }, 1011, {}},
            {"a crowd",
             speaking,
             [](Conversation &c) {
                 c.config();
                 for (int i = 100; i < 200; ++i)
                     c.speak(std::string(29, 'a') + std::to_string(i), "a");
             },
             4429,
             {}},
        });
    }
    void whatTheProtocolForbidsEndsTheConnection()
    {
        const auto [path, say, code, reason] = currentRow<QByteArray, Say, int, QByteArray>();
        Conversation c;
        c.engines->voice = [&c](const std::string &text, const VoiceBank::Sink &) {
            if (text == "hoarse")
                throw std::runtime_error(text);
            c.gate.pass();
        };
        c.open(path.toStdString());
        say(c);
        c.run([&] { return c.over; });
        QCOMPARE(c.closeCode(), code);
        const auto given = QByteArray::fromStdString(c.connection->closed->reason);
        QVERIFY2(reason.isEmpty() ? !given.isEmpty() : given == reason, given);
    }

    void synthesisFailsAsAskedFor_data()
    {
        const QStringList all{"turn.start", "response", "audio 3200", "audio 3200", "audio.metadata", "turn.end"};
        addRows<QByteArray, QStringList, int>({
            {"latency", "'latency','ms':0", all, -1},
            {"drop", "'drop'", all.mid(0, 5), -1},
            {"silence", "'silence'", all.mid(0, 1), -1},
            {"no audio", "'noAudio'", all.mid(0, 2), -1},
            {"stall", "'stall','afterChunks':1", all.mid(0, 3), -1},
            {"early end", "'endEarly','afterChunks':1", all.mid(0, 3) + all.mid(4), -1},
            {"close", "'close','afterChunks':2,'code':1012", all.mid(0, 4), 1012},
            {"reset", "'reset'", all.mid(0, 2), 0},
        });
    }
    void synthesisFailsAsAskedFor()
    {
        const auto [fault, told, code] = currentRow<QByteArray, QStringList, int>();
        Conversation c;
        c.engines->voice = [](const std::string &, const VoiceBank::Sink &sink) {
            sink(std::vector<std::int16_t>(3200));
        };
        c.fault = quoted("{'point':'synthesis.turn','times':1,'kind':" + fault.toStdString() + "}");
        c.open(synthesis, "");
        c.config();
        c.speak(first, "one");
        if (code == -1) { // the next request is spoken as ever
            c.speak(second, "two");
            c.run([&] { return c.told().endsWith("turn.end") && c.idOf(int(c.told().size()) - 1) == second; });
            QCOMPARE(c.told(), told + QStringList({"turn.start", "response", "audio 3200", "audio 3200",
                                                   "audio.metadata", "turn.end"}));
        } else {
            c.run([&] { return c.over; });
            QCOMPARE(c.told(), told);
        }
        QCOMPARE(c.closeCode(), code);
    }

    void aConnectionThatLastsTooLongIsDropped()
    {
        for (const auto path : {dictation, synthesis}) {
            Conversation c;
            c.connectionLimit = 0ms;
            c.open(path);
            c.run([&] { return c.over; });
            QCOMPARE(c.closeCode(), 0);
        }
    }
};

QTEST_APPLESS_MAIN(SpeechSessionsTest)
#include "tst_speech_sessions.moc"

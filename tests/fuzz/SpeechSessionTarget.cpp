#include <future>
#include <thread>

#include "platform/speech/CloudSpeechService.h"
#include "tests/fakes/FakeAudio.h"
#include "tests/fakes/FakeSocketWorker.h"
#include "tests/fuzz/FuzzTargets.h"
#include "tests/fuzz/Property.h"
#include "tests/platform/speech/WireMessage.h"

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

// An input is a list of steps, one a line, each a letter and what it needs:
//   c       the connection stands             p PATH BODY  the service says so in the current turn
//   t TEXT  a text message, "@" for the turn's id, "|" for a line end
//   b BYTES a binary message                  a BYTES      sound in the current turn
//   w N     N bytes of microphone sound       e            the microphone's stream is closed
//   h       the loudspeaker has played all    k N          N seconds pass
//   x N     the connection ends in the N-th way
// Steps that a service or a network cannot take now are passed over.

namespace vynlex::fuzz {
namespace {

const QString key = u"key-for-the-fuzzed-service"_s;

/// The service at the other end of whichever connection is the latest.
class Service {
public:
    explicit Service(FakeSocketWorker &worker)
        : m_worker(worker)
    {
    }

    void take(char step, const QByteArray &rest)
    {
        m_worker.run();
        if (step == 'k')
            m_worker.advance(std::chrono::seconds(std::clamp(rest.toInt(), 0, 100)));
        if (m_worker.socketCount() == 0)
            return;
        FakeSocket socket = m_worker.lastSocket();
        readSent(socket);
        if (!socket.isAlive() || socket.hasEnded())
            return;
        if (socket.isConnecting()) {
            if (step == 'c')
                socket.connected();
            else if (step == 'x')
                socket.deliver(websocket::Error{failure(rest.toInt())});
        } else {
            talk(socket, step, rest);
        }
        m_worker.run();
    }

    /// What the client has sent is well-formed, and no message holds the key.
    void readSent(FakeSocket &socket)
    {
        for (const FakeSocketMessage &message : socket.takeSent()) {
            const WireMessage wire = readWire(message);
            require(wire.error.isEmpty(), "what is sent is well-formed");
            require(!message.data.contains(key.toLatin1()), "the key is in no message");
            m_turn = wire.requestId;
        }
    }

private:
    void talk(FakeSocket &socket, char step, const QByteArray &rest) const
    {
        const qsizetype blank = rest.indexOf(' ');
        switch (step) {
        case 'p':
            socket.text(serviceText(rest.left(blank).constData(), m_turn, blank < 0 ? "{}" : rest.mid(blank + 1)));
            break;
        case 't':
            socket.text(QByteArray(rest).replace('@', m_turn).replace('|', "\r\n"));
            break;
        case 'b':
            socket.binary(rest);
            break;
        case 'a':
            socket.binary(serviceAudio(m_turn, rest));
            break;
        case 'x':
            lose(socket, rest.toInt());
            break;
        default:
            break;
        }
    }

    static WebSocketError failure(int which)
    {
        constexpr int kinds = static_cast<int>(WebSocketError::Kind::Io) + 1;
        return {static_cast<WebSocketError::Kind>(std::abs(which % kinds)), which, key};
    }

    static void lose(FakeSocket &socket, int how)
    {
        if (how == 0)
            socket.deliver(websocket::PeerClosed{});
        else if (how == 1)
            socket.deliver(websocket::ReconnectSuggested{true});
        else if (how < 1000)
            socket.deliver(websocket::Error{failure(how)});
        else
            socket.disconnected(static_cast<std::uint16_t>(how), key); // as a server would that echoes it
    }

    FakeSocketWorker &m_worker;
    QByteArray m_turn;
};

template<typename Take> void forEachStep(const QByteArray &script, const Take &take)
{
    for (const QByteArray &line : script.split('\n').mid(0, 64)) {
        if (!line.isEmpty())
            take(line.front(), line.mid(1).trimmed());
    }
}

void recognise(const QByteArray &script)
{
    const auto worker = std::make_shared<FakeSocketWorker>();
    CloudSpeechService speech(worker, [] { return nullptr; });
    PushAudioInputStream stream = PushAudioInputStream::create();
    const SpeechConfig config = SpeechConfig::fromSubscription(key, u"westeurope"_s).value();
    const auto recognizer = speech.makeRecognizer(config, AudioConfig::fromStreamInput(stream)).value();
    std::vector<SpeechRecognitionResult> results;
    std::vector<CancellationDetails> endings;
    std::size_t lateResults = 0;
    recognizer->recognized = [&](const auto &result) {
        lateResults += endings.size();
        results.push_back(result);
    };
    recognizer->canceled = [&](const auto &details) { endings.push_back(details); };
    (void)recognizer->startContinuousRecognition();

    Service service(*worker);
    forEachStep(script, [&](char step, const QByteArray &rest) {
        if (step == 'w')
            stream.write(QByteArray(std::clamp(rest.toInt(), 0, 64'000) & ~1, 's'));
        else if (step == 'e')
            stream.close();
        service.take(step, rest);
    });
    stream.close();
    for (int waited = 0; endings.empty() && waited < 600; waited += 10)
        worker->advance(10s);

    require(endings.size() == 1 && lateResults == 0, "a recognition ends, once, and nothing comes afterwards");
    require(!endings.front().errorDetails.contains(key), "the key is in no error text");
    for (const SpeechRecognitionResult &result : results)
        require(result.offset >= Ticks::zero() && result.duration >= Ticks::zero(), "no time is negative");
}

void speak(const QByteArray &script)
{
    const auto worker = std::make_shared<FakeSocketWorker>();
    FakeAudio audio;
    CloudSpeechService speech(worker, [&] { return audio.makePlayer(); });
    const SpeechConfig config = SpeechConfig::fromSubscription(key, u"westeurope"_s).value();
    const auto synthesizer = speech.makeSynthesizer(config).value();
    int completions = 0;
    synthesizer->synthesisCompleted = [&](const auto &) { ++completions; };
    auto outcome = std::async(std::launch::async, [&] { return synthesizer->speakText(u"नमस्ते"_s); });
    for (; worker->socketCount() == 0; worker->run())
        std::this_thread::sleep_for(20us);

    Service service(*worker);
    forEachStep(script, [&](char step, const QByteArray &rest) {
        const bool isPlaying = audio.lastPlayback().isFinished() && !audio.lastPlayback().wasStopped();
        if (step == 'h' && isPlaying)
            audio.lastPlayback().complete();
        service.take(step, rest);
    });
    const QByteArray heard = audio.lastPlayback().pcm();
    (void)synthesizer->stopSpeaking();
    const auto result = outcome.get();
    worker->run();

    require(heard.size() % 2 == 0, "whole samples reach the loudspeaker");
    require(result.has_value(), "the loudspeaker works");
    require((result->reason == ResultReason::SynthesizingAudioCompleted) == (completions == 1),
            "a text that was heard is reported, once");
    require(!result->cancellation.errorDetails.contains(key), "the key is in no error text");
}

} // namespace

void speech_session(const QByteArray &bytes)
{
    recognise(bytes);
    speak(bytes);
}

} // namespace vynlex::fuzz

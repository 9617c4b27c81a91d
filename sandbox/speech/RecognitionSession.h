#pragma once

#include <boost/asio/awaitable.hpp>
#include <boost/json/object.hpp>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <unordered_set>
#include <vector>

#include "sandbox/speech/SpeechFault.h"
#include "sandbox/speech/SpeechMessage.h"
#include "sandbox/speech/SpeechRoutes.h"
#include "sandbox/speech/SpeechUpgrade.h"

namespace sandbox {

/// One recogniser's connection: turn after turn of audio in, hypotheses and phrases out.
///
/// A turn begins with the first audio message of a new request id; it ends after the empty one, or after one phrase in
/// interactive mode. Late audio of a turn that ended is ignored. A message is not read before the one ahead of it is
/// decoded: a client that sends faster than that is held up by its own connection. All on the connection's executor.
class RecognitionSession {
public:
    RecognitionSession(std::shared_ptr<SpeechService> service, std::shared_ptr<WebSocketConnection> connection,
                       RecognitionParameters parameters);

    /// Returns when the connection is over.
    boost::asio::awaitable<void> serve();

private:
    struct Turn {
        std::string requestId;
        SpeechFault fault;
        std::unique_ptr<TurnRecogniser> recogniser = nullptr;
        std::string oddByte = {};     ///< half a sample, until its other half comes
        std::int64_t samples = 0;     ///< heard so far
        std::int64_t silenceFrom = 0; ///< in samples: where the silence before the first speech began
        std::int64_t phrases = 0;
        bool spoken = false; ///< speech was heard
    };
    enum class At { Speech, EndOfAudio };

    boost::asio::awaitable<void> handle(const SpeechMessage &message);
    void configure(const SpeechMessage &message);
    void setContext(const SpeechMessage &message);
    boost::asio::awaitable<void> handleAudio(const SpeechMessage &message);
    boost::asio::awaitable<void> beginTurn(const SpeechMessage &message);
    boost::asio::awaitable<void> hear(std::string_view pcm);
    boost::asio::awaitable<void> endAudio();
    boost::asio::awaitable<void> report(const std::vector<RecognitionEvent> &events, At at);
    boost::asio::awaitable<void> reportPhrase(const RecognisedPhrase &phrase);
    boost::asio::awaitable<void> reportLongSilence();
    boost::asio::awaitable<void> endTurn();
    void forgetTurn();
    /// Plays a fault of the middle of a turn when its time has come; the turn may be over then.
    boost::asio::awaitable<void> playFault();

    [[nodiscard]] bool isInteractive() const { return m_mode == RecognitionMode::Interactive; }
    boost::asio::awaitable<void> send(std::string_view path, const boost::json::object &body);
    boost::asio::awaitable<void> sendOffset(std::string_view path, Ticks offset);
    boost::asio::awaitable<void> sendStatus(std::string_view status, Ticks offset, Ticks duration);

    std::shared_ptr<SpeechService> m_service;
    std::shared_ptr<WebSocketConnection> m_connection;
    const RecognitionParameters m_parameters;
    RecognitionMode m_mode;
    bool m_configured = false;
    bool m_detailed;
    std::optional<std::chrono::milliseconds> m_initialSilence;
    std::optional<Turn> m_turn;
    std::unordered_set<std::string> m_endedTurns;

    /// A phrase was recognised since the client last began a stream of audio: what is left of that stream, in this turn
    /// or in one that goes on with it, is no utterance of its own.
    bool m_understood = false;
};

} // namespace sandbox

#pragma once

#include <boost/asio/awaitable.hpp>

#include <memory>
#include <optional>
#include <string>
#include <unordered_set>

#include "sandbox/server/FaultBoard.h"
#include "sandbox/speech/SpeechMessage.h"
#include "sandbox/speech/SpeechRoutes.h"
#include "sandbox/speech/SpeechUpgrade.h"

namespace sandbox {

/// One recogniser's connection: turn after turn of audio in, hypotheses and phrases out.
///
/// A turn begins with the first audio message of a new request id and ends after the empty one, or after one phrase in
/// interactive mode. Late audio of a turn that ended is ignored. All on the connection's executor.
class RecognitionSession {
public:
    RecognitionSession(std::shared_ptr<SpeechService> service, std::shared_ptr<WebSocketConnection> connection,
                       RecognitionParameters parameters);

    /// Returns when the connection is over.
    boost::asio::awaitable<void> serve();

private:
    struct Turn {
        std::string requestId;
        StreamingRecogniser recogniser;
        std::optional<FaultBoard::PointFault> fault;
        std::string oddByte;          ///< half a sample, until its other half comes
        std::int64_t samples = 0;     ///< heard so far
        std::int64_t silenceFrom = 0; ///< where the running silence began, in samples
        bool speaking = false;
        bool silent = false; ///< by a fault: nothing is answered
    };

    boost::asio::awaitable<void> handle(const SpeechMessage &message, bool binary);
    boost::asio::awaitable<void> handleAudio(const SpeechMessage &message);
    boost::asio::awaitable<void> beginTurn(const SpeechMessage &message);
    boost::asio::awaitable<void> hear(std::string_view pcm);
    boost::asio::awaitable<void> endTurn(bool finishOpenSpeech);
    boost::asio::awaitable<void> report(const std::vector<RecognitionEvent> &events);
    boost::asio::awaitable<void> reportPhrase(const RecognisedPhrase &phrase);
    boost::asio::awaitable<void> reportLongSilence();
    /// Plays a fault of the middle of a turn; true when the turn is over for it.
    boost::asio::awaitable<bool> interrupted();
    boost::asio::awaitable<void> send(std::string_view path, const std::string &json);
    boost::asio::awaitable<void> sendStatus(std::string_view status, Ticks offset, Ticks duration);

    std::shared_ptr<SpeechService> m_service;
    std::shared_ptr<WebSocketConnection> m_connection;
    const RecognitionParameters m_parameters;
    bool m_detailed = false;
    std::optional<Turn> m_turn;
    std::unordered_set<std::string> m_endedTurns;
};

} // namespace sandbox

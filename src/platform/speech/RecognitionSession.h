#pragma once

#include <QString>
#include <QUrl>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>

#include "platform/speech/AudioBacklog.h"
#include "platform/speech/HandlerGate.h"
#include "platform/speech/PushAudioInputStream.h"
#include "platform/speech/SpeechBodies.h"
#include "platform/speech/SpeechConnection.h"

namespace vynlex {

struct RecognitionSettings {
    QUrl url;
    QString key;
    QString language;
    RecognitionMode mode = RecognitionMode::Conversation;
};

struct RecognitionHandlers {
    std::function<void(const SpeechRecognitionResult &)> recognized;
    std::function<void(const CancellationDetails &)> canceled;
};

/// One continuous recognition, from the start to its cancellation: connections, turns, and the audio that no phrase
/// covers yet. Lives on the socket worker; only the constructor, `start` and `stop` are for other threads.
///
/// A connection carries turns, one after the other; either may end while audio still flows. The audio from the end of
/// the last phrase on is kept, and the next turn begins with it, so that the service hears every sample in order, and
/// none twice but for those it had not covered with a phrase. Results count time from the first sample of all.
///
/// A message that does not belong to the running turn, or is not framed as a message, is skipped; a phrase that cannot
/// be read cancels with ServiceError, because its text is lost.
class RecognitionSession : public std::enable_shared_from_this<RecognitionSession> {
public:
    RecognitionSession(SocketWorker &worker, RecognitionSettings settings, PushAudioInputStream stream,
                       RecognitionHandlers handlers);

    /// Any thread, once. The worker outlives the session.
    void start();
    /// Any thread. Waits for a handler that runs on another thread; none begins afterwards. The connection is dropped
    /// on the worker.
    void stop();

private:
    struct Turn {
        QByteArray id;
        qint64 begin = 0;        ///< Where its audio began.
        bool answered = false;   ///< The service has said something in it.
        bool audioEnded = false; ///< The empty audio message is out.
        std::chrono::steady_clock::time_point begun;
    };
    using Step = void (RecognitionSession::*)();

    void connect();
    void connected();
    void receive(const SpeechMessage &message);
    void receivePhrase(const SpeechPhrase &phrase);
    void receiveTurnEnd();
    void takeAudio(const QByteArray &pcm);
    void takeEndOfAudio();
    void pump();
    void beginTurn();
    [[nodiscard]] std::chrono::milliseconds delayOfNextPiece() const;
    void sendAudio(const QByteArray &pcm, const QByteArray &contentType = {});
    void turnStartTimedOut();
    void turnEndTimedOut();
    void connectionFailed(const SpeechFailure &failure);
    void forgetTurn();
    [[nodiscard]] bool isAllHeard() const;
    void finish();
    void fail(const SpeechFailure &failure);
    void end(const CancellationDetails &details);
    [[nodiscard]] std::unique_ptr<Timer> after(std::chrono::milliseconds delay, Step step);
    [[nodiscard]] Ticks timeAt(qint64 position) const;

    SocketWorker &m_worker;
    const RecognitionSettings m_settings;
    const QByteArray m_connectionId = makeSpeechId(); ///< Also the session's id; stays over reconnects.
    PushAudioInputStream m_stream;
    HandlerGate m_gate;
    RecognitionHandlers m_handlers; ///< Touched inside the gate, and after it has been closed.

    AudioBacklog m_backlog;
    bool m_inputClosed = false;
    bool m_ended = false; ///< The cancellation is out, or the session was stopped.

    std::unique_ptr<SpeechConnection> m_connection;
    QByteArray m_configRequestId; ///< Of `speech.config`, which shares it with the connection's first turn.
    int m_reconnects = 0;         ///< Since a phrase last covered some audio.
    qint64 m_fastBytesLeft = 0;
    std::chrono::steady_clock::time_point m_nextPiece;

    std::optional<Turn> m_turn;
    qint64 m_sent = 0; ///< How far the running turn's audio is out.
    std::size_t m_hastyTurns = 0;

    std::unique_ptr<Timer> m_pause;    ///< Before a reconnect or after a hasty turn.
    std::unique_ptr<Timer> m_pace;     ///< Before the next piece of audio.
    std::unique_ptr<Timer> m_deadline; ///< For the service's next word.
};

} // namespace vynlex

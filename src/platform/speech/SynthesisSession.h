#pragma once

#include <QString>
#include <QUrl>

#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>

#include "platform/audio/AudioPlayer.h"
#include "platform/speech/HandlerGate.h"
#include "platform/speech/SpeechConnection.h"
#include "platform/speech/SpeechService.h"

namespace vynlex {

struct SynthesisSettings {
    QUrl url;
    QString key;
    QString voiceName;
};

/// One text on its way from the service to the loudspeaker. The conversation with the service lives on the socket
/// worker; `speak` blocks another thread meanwhile; `stop` comes from anywhere.
///
/// There is one attempt and no reconnect: after a pause in the middle of a sentence, the sentence is better said again.
/// Messages that do not belong to the request, or are not framed as messages, are skipped.
class SynthesisSession : public std::enable_shared_from_this<SynthesisSession> {
public:
    using Outcome = tl::expected<SpeechSynthesisResult, QString>;
    using Completed = std::function<void(const SpeechSynthesisResult &)>;

    /// `completed` runs on the worker, through `gate`.
    SynthesisSession(SocketWorker &worker, SynthesisSettings settings, std::unique_ptr<AudioPlayer> player,
                     Completed completed, std::shared_ptr<HandlerGate> gate);

    /// Once; blocks until the outcome is known. Any thread but the worker.
    Outcome speak(const QString &text);

    /// The sound stops and `speak` returns CancelledByUser, unless its outcome is known already. Does not wait.
    void stop();

private:
    /// The service's client library calls these states so in its error texts.
    enum class State { Sending, TurnStarted, ReceivingData, Finished };
    using Step = void (SynthesisSession::*)();

    void connect();
    void connected();
    void receive(const SpeechMessage &message);
    void receiveAudio(const QByteArray &bytes);
    void receiveTurnEnd();
    void soundEnded(const tl::expected<void, QString> &heard);
    void connectionFailed(const SpeechFailure &failure);
    void firstAudioTimedOut();
    void nextAudioTimedOut();
    void fail(const SpeechFailure &failure);
    void dropConnection();
    void send(const char *path, const char *contentType, const QByteArray &body);
    [[nodiscard]] std::unique_ptr<Timer> after(std::chrono::milliseconds delay, Step step);

    /// The first who decides the outcome claims it; later claims fail. With the lock held.
    bool claim();
    void release(Outcome outcome);

    SocketWorker &m_worker;
    const SynthesisSettings m_settings;
    const QByteArray m_connectionId = makeSpeechId();
    const QByteArray m_requestId = makeSpeechId();
    const Completed m_completed;
    const std::shared_ptr<HandlerGate> m_gate;

    std::mutex m_mutex;
    std::condition_variable m_released;
    std::unique_ptr<AudioPlayer> m_player; ///< Locked; used only while nobody has claimed.
    bool m_claimed = false;                ///< Locked.
    std::optional<Outcome> m_outcome;      ///< Locked.

    // On the worker only.
    QByteArray m_ssml;
    std::unique_ptr<SpeechConnection> m_connection;
    std::unique_ptr<Timer> m_deadline;
    State m_state = State::Sending;
    qint64 m_receivedBytes = 0;
    QByteArray m_halfFrame; ///< The service may cut a sample in two.
};

} // namespace vynlex

#include "platform/speech/SynthesisSession.h"

#include <utility>

#include "platform/speech/SpeechLimits.h"
#include "platform/speech/Ssml.h"

namespace vynlex {
namespace {

/// What the neural voices are made at.
constexpr int sampleRateHz = 24'000;
constexpr char outputFormat[] = "raw-24khz-16bit-mono-pcm";
constexpr qint64 bytesPerFrame = 2;

const AudioFormat &soundFormat()
{
    static const AudioFormat format{sampleRateHz, 1, AudioFormat::SampleType::Int16};
    return format;
}

Ticks playTime(qint64 bytes)
{
    return std::chrono::duration_cast<Ticks>(std::chrono::seconds(1)) * (bytes / bytesPerFrame) / sampleRateHz;
}

SpeechSynthesisResult canceled(CancellationReason reason, CancellationErrorCode code, const QString &details)
{
    return {ResultReason::Canceled, {reason, code, details}, {}};
}

} // namespace

SynthesisSession::SynthesisSession(SocketWorker &worker, SynthesisSettings settings,
                                   std::unique_ptr<AudioPlayer> player, Completed completed,
                                   std::shared_ptr<HandlerGate> gate)
    : m_worker(worker)
    , m_settings(std::move(settings))
    , m_completed(std::move(completed))
    , m_gate(std::move(gate))
    , m_player(std::move(player))
{
}

SynthesisSession::Outcome SynthesisSession::speak(const QString &text)
{
    {
        const std::lock_guard lock(m_mutex);
        if (!m_claimed) {
            if (const auto started = m_player->start(soundFormat()); !started)
                return tl::unexpected(started.error());
        }
    }
    m_worker.post([self = shared_from_this(), document = ssml(text, m_settings.voiceName)] {
        self->m_ssml = document;
        self->connect();
    });

    std::unique_ptr<AudioPlayer> player; // Closes the loudspeaker after the lock is gone, on this thread.
    std::unique_lock lock(m_mutex);
    m_released.wait(lock, [this] { return m_outcome.has_value(); });
    player = std::move(m_player);
    m_worker.post([self = shared_from_this()] { self->dropConnection(); });
    return *m_outcome;
}

void SynthesisSession::stop()
{
    const std::lock_guard lock(m_mutex);
    if (!claim())
        return;
    m_player->stop();
    release(canceled(CancellationReason::CancelledByUser, CancellationErrorCode::NoError, {}));
}

void SynthesisSession::connect()
{
    {
        const std::lock_guard lock(m_mutex);
        if (m_claimed)
            return;
    }
    if (!isSendableKey(m_settings.key)) {
        fail(failureOf(websocket::Error{{WebSocketError::Kind::UpgradeRefused, 401, {}}}, {}));
        return;
    }
    m_connection = std::make_unique<SpeechConnection>(
        m_worker, m_settings.url, m_settings.key, m_connectionId,
        SpeechConnection::Handlers{whileAlive(weak_from_this(), &SynthesisSession::connected),
                                   whileAlive(weak_from_this(), &SynthesisSession::receive),
                                   whileAlive(weak_from_this(), &SynthesisSession::connectionFailed),
                                   {}});
}

void SynthesisSession::connected()
{
    send("speech.config", "application/json", synthesisConfigBody());
    send("synthesis.context", "application/json", synthesisContextBody(outputFormat));
    send("ssml", "application/ssml+xml", m_ssml);
    m_deadline = after(SpeechLimits::turnStart, &SynthesisSession::firstAudioTimedOut);
}

void SynthesisSession::connectionFailed(const SpeechFailure &failure)
{
    m_connection.reset();
    if (m_state != State::Finished)
        fail(failure);
}

void SynthesisSession::receive(const SpeechMessage &message)
{
    if (m_state == State::Finished || !message.belongsTo(m_requestId))
        return;
    if (message.hasPath("turn.start") && m_state == State::Sending) {
        m_state = State::TurnStarted;
        m_deadline = after(SpeechLimits::firstAudio, &SynthesisSession::firstAudioTimedOut);
    } else if (message.hasPath("audio")) {
        receiveAudio(message.body);
    } else if (message.hasPath("turn.end")) {
        receiveTurnEnd();
    }
    // The announcement of the sound and the word boundaries: nobody asks for them.
}

void SynthesisSession::receiveAudio(const QByteArray &bytes)
{
    if (bytes.isEmpty())
        return;
    m_state = State::ReceivingData;
    m_receivedBytes += bytes.size();
    if (playTime(m_receivedBytes) > SpeechLimits::maximumSound) {
        fail(failureOf(PhraseStatus::Error));
        return;
    }
    m_deadline = after(SpeechLimits::nextAudio, &SynthesisSession::nextAudioTimedOut);

    QByteArray frames = std::exchange(m_halfFrame, {}) + bytes;
    const qsizetype whole = frames.size() - frames.size() % bytesPerFrame;
    m_halfFrame = frames.mid(whole);
    frames.truncate(whole);
    const std::lock_guard lock(m_mutex);
    if (!m_claimed && !frames.isEmpty())
        m_player->write(frames);
}

void SynthesisSession::receiveTurnEnd()
{
    m_state = State::Finished;
    m_deadline.reset();
    m_connection->close();
    const std::lock_guard lock(m_mutex);
    if (m_claimed)
        return;
    m_player->finish([&worker = m_worker, weak = weak_from_this()](tl::expected<void, QString> heard) {
        // Nothing of the session may be locked or freed on the player's thread.
        worker.post([weak, heard = std::move(heard)] {
            if (const auto self = weak.lock())
                self->soundEnded(heard);
        });
    });
}

void SynthesisSession::soundEnded(const tl::expected<void, QString> &heard)
{
    {
        const std::lock_guard lock(m_mutex);
        if (!claim())
            return;
    }
    Outcome outcome = SpeechSynthesisResult{ResultReason::SynthesizingAudioCompleted, {}, playTime(m_receivedBytes)};
    if (heard) {
        m_gate->run([&] {
            if (m_completed)
                m_completed(*outcome);
        });
    } else {
        outcome = tl::unexpected(heard.error());
    }
    const std::lock_guard lock(m_mutex);
    release(std::move(outcome));
}

void SynthesisSession::firstAudioTimedOut()
{
    fail(firstAudioTimeoutFailure());
}

void SynthesisSession::nextAudioTimedOut()
{
    fail(synthesisTimeoutFailure());
}

void SynthesisSession::fail(const SpeechFailure &failure)
{
    const char *state = m_state == State::Sending       ? "Sending"
                        : m_state == State::TurnStarted ? "TurnStarted"
                                                        : "ReceivingData";
    const QString details = QStringLiteral("%1 USP state: %2. Received audio size: %3 bytes.")
                                .arg(failure.text, QLatin1String(state), QString::number(m_receivedBytes));
    m_state = State::Finished;
    m_deadline.reset();
    if (m_connection)
        m_connection->close();
    const std::lock_guard lock(m_mutex);
    if (!claim())
        return;
    m_player->stop();
    release(canceled(CancellationReason::Error, failure.code, withoutKey(details, m_settings.key)));
}

void SynthesisSession::send(const char *path, const char *contentType, const QByteArray &body)
{
    m_connection->sendText({path, m_requestId, contentType, body});
}

std::unique_ptr<Timer> SynthesisSession::after(std::chrono::milliseconds delay, Step step)
{
    return m_worker.after(delay, whileAlive(weak_from_this(), step));
}

void SynthesisSession::dropConnection()
{
    m_state = State::Finished;
    m_deadline.reset();
    m_connection.reset();
}

bool SynthesisSession::claim()
{
    return !std::exchange(m_claimed, true);
}

void SynthesisSession::release(Outcome outcome)
{
    m_outcome = std::move(outcome);
    m_released.notify_all();
}

} // namespace vynlex

#include "platform/speech/RecognitionSession.h"

#include <algorithm>

#include "platform/speech/SpeechLimits.h"

namespace vynlex {
namespace {

constexpr qint64 bytesPerSample = 2;
constexpr std::int64_t ticksPerSample = 10'000'000 / (SpeechLimits::bytesPerSecond / bytesPerSample);

/// Whole samples; one that `time` cuts in two counts as not reached.
qint64 bytesIn(Ticks time)
{
    return time.count() / ticksPerSample * bytesPerSample;
}

std::chrono::microseconds audioTime(qint64 bytes)
{
    return std::chrono::microseconds(bytes * 1'000'000 / SpeechLimits::bytesPerSecond);
}

} // namespace

RecognitionSession::RecognitionSession(SocketWorker &worker, RecognitionSettings settings, PushAudioInputStream stream,
                                       RecognitionHandlers handlers)
    : m_worker(worker)
    , m_settings(std::move(settings))
    , m_stream(std::move(stream))
    , m_handlers(std::move(handlers))
{
}

void RecognitionSession::start()
{
    m_worker.post([self = shared_from_this()] {
        if (self->m_ended)
            return;
        if (isSendableKey(self->m_settings.key))
            self->connect();
        else
            self->fail(failureOf(websocket::Error{{WebSocketError::Kind::UpgradeRefused, 401, {}}}, {}));
    });
    m_stream.setReader([&worker = m_worker, take = whileAlive(weak_from_this(), &RecognitionSession::takeAudio)](
                           const QByteArray &pcm) { worker.post([take, pcm] { take(pcm); }); },
                       [&worker = m_worker, take = whileAlive(weak_from_this(), &RecognitionSession::takeEndOfAudio)] {
                           worker.post(take);
                       });
}

void RecognitionSession::stop()
{
    // The writer may go on; nobody listens any more.
    m_stream.setReader([](const QByteArray &) {}, [] {});
    m_gate.close();
    m_handlers = {};
    m_worker.post([self = shared_from_this()] {
        self->m_ended = true;
        self->forgetTurn();
        self->m_pause.reset();
        self->m_connection.reset();
    });
}

void RecognitionSession::connect()
{
    m_pause.reset();
    const auto failed = whileAlive(weak_from_this(), &RecognitionSession::connectionFailed);
    m_connection = std::make_unique<SpeechConnection>(
        m_worker, m_settings.url, m_settings.key, m_connectionId,
        SpeechConnection::Handlers{whileAlive(weak_from_this(), &RecognitionSession::connected),
                                   whileAlive(weak_from_this(), &RecognitionSession::receive), failed, failed});
}

void RecognitionSession::connected()
{
    m_fastBytesLeft = SpeechLimits::fastBytes;
    m_nextPiece = m_worker.now();
    m_configRequestId = makeSpeechId();
    m_connection->sendText(
        {"speech.config", m_configRequestId, "application/json", recognitionConfigBody(m_settings.mode)});
    pump();
}

void RecognitionSession::receive(const SpeechMessage &message)
{
    if (m_ended || !m_turn || !message.belongsTo(m_turn->id))
        return;
    m_turn->answered = true;
    if (m_turn->audioEnded)
        m_deadline = after(SpeechLimits::turnEnd, &RecognitionSession::turnEndTimedOut);
    else
        m_deadline.reset();

    if (message.hasPath("speech.phrase")) {
        if (const auto phrase = readPhrase(message.body))
            receivePhrase(*phrase);
        else
            fail(failureOf(PhraseStatus::Error));
    } else if (message.hasPath("turn.end")) {
        receiveTurnEnd();
    }
    // Start and end of speech, hypotheses and whatever else there is: nobody asks for them.
}

void RecognitionSession::receivePhrase(const SpeechPhrase &phrase)
{
    const bool heard = phrase.status == PhraseStatus::Success;
    switch (phrase.status) {
    case PhraseStatus::Success:
    case PhraseStatus::NoMatch:
    case PhraseStatus::InitialSilenceTimeout:
    case PhraseStatus::BabbleTimeout:
    case PhraseStatus::EndOfDictation:
        break;
    default:
        fail(failureOf(phrase.status));
        return;
    }

    const Ticks turnBegin = timeAt(m_turn->begin);
    const qint64 coveredBefore = m_backlog.begin();
    m_backlog.letGoBefore(std::min(m_turn->begin + bytesIn(phrase.offset + phrase.duration), m_sent));
    if (m_backlog.begin() > coveredBefore)
        m_reconnects = 0;
    if (phrase.status == PhraseStatus::EndOfDictation)
        return;
    m_gate.run([&] {
        // A copy: the handler may replace the recogniser, and with it the function that is running.
        if (const auto recognized = m_handlers.recognized)
            recognized({heard ? ResultReason::RecognizedSpeech : ResultReason::NoMatch, heard ? phrase.text : QString(),
                        turnBegin + phrase.offset, phrase.duration});
    });
}

void RecognitionSession::receiveTurnEnd()
{
    if (m_turn->audioEnded) {
        finish();
        return;
    }
    const bool hasty = m_worker.now() - m_turn->begun < SpeechLimits::hastyTurn &&
                       audioTime(m_backlog.begin() - m_turn->begin) < SpeechLimits::hastyTurn;
    forgetTurn();
    if (!hasty) {
        m_hastyTurns = 0;
    } else if (m_hastyTurns < SpeechLimits::hastyTurnPauses.size()) {
        m_pause = after(SpeechLimits::hastyTurnPauses[m_hastyTurns++], &RecognitionSession::pump);
        return;
    } else {
        fail(inactivityFailure());
        return;
    }
    pump();
}

void RecognitionSession::takeAudio(const QByteArray &pcm)
{
    if (m_ended)
        return;
    m_backlog.append(pcm);
    if (m_backlog.end() - m_backlog.begin() > SpeechLimits::maximumKeptBytes)
        fail(inactivityFailure());
    else if (!m_pause)
        pump();
}

void RecognitionSession::takeEndOfAudio()
{
    m_inputClosed = true;
    if (!m_pause)
        pump();
}

/// Sends what can be sent now. A turn begins when there is something to hear, or its end to tell.
void RecognitionSession::pump()
{
    m_pause.reset();
    m_pace.reset();
    if (m_ended || !m_connection || !m_connection->isEstablished())
        return;
    if (isAllHeard()) {
        finish();
        return;
    }
    if (!m_turn && (!m_backlog.isEmpty() || m_inputClosed))
        beginTurn();

    while (m_turn && !m_turn->audioEnded) {
        QByteArray piece = m_backlog.read(m_sent, SpeechLimits::pieceBytes);
        if (!m_inputClosed)
            piece.chop(piece.size() % bytesPerSample);
        if (piece.isEmpty()) {
            if (m_inputClosed) {
                sendAudio({});
                m_turn->audioEnded = true;
                m_deadline = after(SpeechLimits::turnEnd, &RecognitionSession::turnEndTimedOut);
            }
            return;
        }
        if (const auto delay = delayOfNextPiece(); delay.count() > 0) {
            m_pace = after(delay, &RecognitionSession::pump);
            return;
        }
        sendAudio(piece);
        m_sent += piece.size();
        m_fastBytesLeft -= std::min(m_fastBytesLeft, piece.size());
        m_nextPiece = m_worker.now() + audioTime(piece.size()) / SpeechLimits::maximumSpeed;
        if (m_sent - m_backlog.begin() > SpeechLimits::maximumUnacknowledgedBytes) {
            fail(inactivityFailure());
            return;
        }
    }
}

void RecognitionSession::beginTurn()
{
    m_sent = m_backlog.begin();
    QByteArray id = std::exchange(m_configRequestId, {});
    m_turn = Turn{id.isEmpty() ? makeSpeechId() : std::move(id), m_sent, false, false, m_worker.now()};
    m_connection->sendText({"speech.context", m_turn->id, "application/json",
                            recognitionContextBody(m_settings.mode, m_settings.language)});
    sendAudio(waveStreamHeader(), "audio/x-wav");
    m_deadline = after(SpeechLimits::turnStart, &RecognitionSession::turnStartTimedOut);
}

std::chrono::milliseconds RecognitionSession::delayOfNextPiece() const
{
    if (m_fastBytesLeft > 0)
        return {};
    return std::chrono::ceil<std::chrono::milliseconds>(m_nextPiece - m_worker.now());
}

void RecognitionSession::sendAudio(const QByteArray &pcm, const QByteArray &contentType)
{
    m_connection->sendBinary({"audio", m_turn->id, contentType, pcm});
}

void RecognitionSession::turnStartTimedOut()
{
    connectionFailed(inactivityFailure());
}

void RecognitionSession::turnEndTimedOut()
{
    connectionFailed(stopTimeoutFailure());
}

void RecognitionSession::connectionFailed(const SpeechFailure &failure)
{
    m_connection.reset();
    forgetTurn();
    if (m_ended)
        return;
    if (isAllHeard())
        finish();
    else if (failure.permanent || m_reconnects >= static_cast<int>(SpeechLimits::reconnectPauses.size()))
        fail(failure);
    else
        m_pause = after(SpeechLimits::reconnectPauses[static_cast<std::size_t>(m_reconnects++)],
                        &RecognitionSession::connect);
}

void RecognitionSession::forgetTurn()
{
    m_turn.reset();
    m_pace.reset();
    m_deadline.reset();
}

/// Between turns: the stream has ended and phrases cover it to the end. No turn is needed to say so.
bool RecognitionSession::isAllHeard() const
{
    return !m_turn && m_inputClosed && m_backlog.isEmpty() && m_backlog.end() > 0;
}

void RecognitionSession::finish()
{
    end({CancellationReason::EndOfStream, CancellationErrorCode::NoError, {}});
}

void RecognitionSession::fail(const SpeechFailure &failure)
{
    end({CancellationReason::Error, failure.code,
         withoutKey(failure.text + QStringLiteral(" SessionId: ") + QString::fromLatin1(m_connectionId),
                    m_settings.key)});
}

void RecognitionSession::end(const CancellationDetails &details)
{
    m_ended = true;
    forgetTurn();
    m_pause.reset();
    m_stream.setReader([](const QByteArray &) {}, [] {});
    m_backlog = {};
    if (m_connection)
        m_connection->close();
    m_gate.run([&] {
        if (const auto canceled = m_handlers.canceled)
            canceled(details);
    });
}

std::unique_ptr<Timer> RecognitionSession::after(std::chrono::milliseconds delay, Step step)
{
    return m_worker.after(delay, whileAlive(weak_from_this(), step));
}

Ticks RecognitionSession::timeAt(qint64 position) const
{
    return Ticks(position / bytesPerSample * ticksPerSample);
}

} // namespace vynlex

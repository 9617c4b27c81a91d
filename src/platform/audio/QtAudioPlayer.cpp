#include "platform/audio/QtAudioPlayer.h"

#include <QAudioSink>
#include <QElapsedTimer>
#include <QIODevice>
#include <QMediaDevices>
#include <QTimer>

#include <algorithm>
#include <atomic>
#include <memory>
#include <optional>
#include <utility>

#include "platform/audio/AudioThread.h"
#include "platform/audio/QtFormat.h"
#include "platform/dispatch/Guarded.h"

namespace vynlex {
namespace {

constexpr int prebufferMs = 60;     ///< Collected before the first sample is heard, against gaps at the start.
constexpr int deviceBufferMs = 100; ///< In the sink at most.
constexpr int pumpMs = 10;
/// Silence after the sound. A server starts to play when its buffer is full, which a short sound does not do; and it
/// drops the last milliseconds when it runs dry.
constexpr int paddingMs = 150;

/// One sound on the loudspeaker. Lives on the audio thread.
class Output {
public:
    Output(const QAudioDevice &device, const AudioFormat &format, std::function<void(bool)> over)
        : m_sink(device, toQt(format))
        , m_frameBytes(format.bytesPerFrame())
        , m_bytesPerMs(format.sampleRateHz * format.bytesPerFrame() / 1000)
        , m_over(std::move(over))
    {
        m_sink.setBufferSize(static_cast<int>(m_bytesPerMs * deviceBufferMs) / m_frameBytes * m_frameBytes);
        m_pump.setTimerType(Qt::PreciseTimer);
        m_pump.setInterval(pumpMs);
        QObject::connect(&m_pump, &QTimer::timeout, [this] { pump(); });
    }

    ~Output()
    {
        m_sink.disconnect();
        m_sink.reset(); // drops what was not heard
    }

    Output(const Output &) = delete;
    Output &operator=(const Output &) = delete;

    bool start()
    {
        m_device = m_sink.start();
        // With no server nothing is signalled: the error is there right after the call, or never.
        return m_device && (m_sink.error() == QAudio::NoError || m_sink.error() == QAudio::UnderrunError);
    }

    void write(const QByteArray &pcm)
    {
        m_waiting += pcm;
        if (!m_begun && static_cast<double>(m_waiting.size()) < m_bytesPerMs * prebufferMs)
            return;
        begin();
    }

    void finish()
    {
        m_finished = true;
        m_waiting += QByteArray(static_cast<qsizetype>(m_bytesPerMs * paddingMs) / m_frameBytes * m_frameBytes, '\0');
        begin();
    }

private:
    void begin()
    {
        if (!m_begun)
            m_progress.start();
        m_begun = true;
        m_pump.start();
        pump();
    }

    void pump()
    {
        const qsizetype count = std::min<qsizetype>(m_waiting.size(), m_sink.bytesFree() / m_frameBytes * m_frameBytes);
        const qint64 taken = count > 0 ? m_device->write(m_waiting.constData(), count) : 0;
        if (taken > 0) {
            m_waiting.remove(0, taken);
            m_progress.start();
        }
        if (m_waiting.isEmpty() && !m_finished) {
            m_progress.start(); // nothing to take is no silence of the device
            return;
        }
        if (m_waiting.isEmpty() && m_sink.state() == QAudio::IdleState) {
            end(true);
        } else if (m_progress.elapsed() >= QtAudioPlayer::watchdogMs) {
            end(false);
        }
    }

    void end(bool heard)
    {
        m_pump.stop();
        const auto over = m_over; // may destroy this object
        over(heard);
    }

    QAudioSink m_sink;
    QIODevice *m_device = nullptr;
    int m_frameBytes;
    double m_bytesPerMs;
    std::function<void(bool)> m_over;
    QByteArray m_waiting;
    bool m_begun = false;
    bool m_finished = false;
    QElapsedTimer m_progress; ///< Since the sink has taken something, or has had nothing to take.
    QTimer m_pump;
};

} // namespace

struct QtAudioPlayer::Playback : std::enable_shared_from_this<QtAudioPlayer::Playback> {
    std::unique_ptr<Output> output; ///< The audio thread's.
    std::atomic<bool> stopped = false;
    Ended ended;               ///< The audio thread's.
    std::optional<bool> heard; ///< The audio thread's: over before `finish` came.

    tl::expected<void, QString> open(const AudioFormat &format)
    {
        const QAudioDevice device = QMediaDevices::defaultAudioOutput();
        if (device.isNull())
            return tl::unexpected(QStringLiteral("There is no loudspeaker."));
        if (!device.isFormatSupported(toQt(format)))
            return tl::unexpected(QStringLiteral("The loudspeaker does not take %1 Hz.").arg(format.sampleRateHz));
        output = std::make_unique<Output>(device, format, [this](bool heardAll) { over(heardAll); });
        if (output->start())
            return {};
        output.reset();
        return tl::unexpected(QStringLiteral("The loudspeaker cannot be opened."));
    }

    void over(bool heardAll)
    {
        heard = heardAll;
        // The output is in the middle of a call.
        AudioThread::async([self = shared_from_this()] { self->output.reset(); });
        tell();
    }

    void tell()
    {
        if (!heard || !ended || stopped.exchange(true))
            return;
        const Ended callback = std::exchange(ended, {});
        callback(*heard ? tl::expected<void, QString>()
                        : tl::unexpected(QStringLiteral("The loudspeaker was taken away.")));
    }
};

QtAudioPlayer::QtAudioPlayer()
    : m_playback(std::make_shared<Playback>())
{
}

QtAudioPlayer::~QtAudioPlayer()
{
    QtAudioPlayer::stop();
}

tl::expected<void, QString> QtAudioPlayer::start(const AudioFormat &format)
{
    using Result = tl::expected<void, QString>;
    const auto result = std::make_shared<Guarded<Result>>();
    const bool answered =
        AudioThread::sync([playback = m_playback, format, result] { result->set(playback->open(format)); });
    if (answered)
        return result->copy();
    stop();
    return tl::unexpected(QStringLiteral("The sound server does not answer."));
}

void QtAudioPlayer::write(const QByteArray &pcm)
{
    AudioThread::async([playback = m_playback, pcm] {
        if (playback->output && !playback->heard && !playback->stopped)
            playback->output->write(pcm);
    });
}

void QtAudioPlayer::finish(Ended ended)
{
    AudioThread::async([playback = m_playback, ended = std::move(ended)] {
        if (playback->stopped)
            return;
        playback->ended = ended;
        if (playback->heard)
            playback->tell();
        else if (playback->output)
            playback->output->finish();
    });
}

void QtAudioPlayer::stop()
{
    m_playback->stopped = true;
    AudioThread::async([playback = m_playback] {
        playback->output.reset();
        playback->ended = {};
    });
}

} // namespace vynlex

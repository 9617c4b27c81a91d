#include "platform/audio/WavAudioPlayer.h"

#include <algorithm>
#include <condition_variable>
#include <mutex>
#include <optional>
#include <thread>

#include "platform/audio/WavFile.h"
#include "platform/dispatch/Console.h"

namespace vynlex {
namespace {

using Clock = std::chrono::steady_clock;

} // namespace

struct WavAudioPlayer::State {
    QString path;
    Pace pace = Pace::RealTime;
    Observer observer;

    std::mutex mutex;
    std::condition_variable changed;
    PcmBuffer sound;
    bool started = false;
    bool finished = false;
    bool over = false; ///< Heard to its end, or stopped.
    std::optional<Clock::time_point> firstSample;
    Clock::time_point lastSample; ///< When everything that was written will have been heard.
    Ended ended;

    [[nodiscard]] Clock::duration durationOf(qsizetype frames) const
    {
        if (pace == Pace::AsFastAsWritten)
            return {};
        return std::chrono::duration_cast<Clock::duration>(
            std::chrono::duration<double>(static_cast<double>(frames) / sound.format.sampleRateHz));
    }

    /// Waits for the end of the sound, or for `stop`.
    void play()
    {
        std::unique_lock lock(mutex);
        changed.wait(lock, [this] { return finished || over; });
        changed.wait_until(lock, lastSample, [this] { return over; });
        if (over)
            return;
        over = true;
        const Ended callback = std::exchange(ended, {});
        lock.unlock();
        const auto saved = save(Clock::now(), true);
        callback(saved);
    }

    void stop()
    {
        Ended dropped;
        {
            const std::lock_guard lock(mutex);
            if (!started || std::exchange(over, true))
                return;
            dropped.swap(ended);
            const Clock::time_point now = Clock::now();
            if (lastSample > now && pace == Pace::RealTime) {
                const std::chrono::duration<double> unheard = lastSample - now;
                const auto frames = static_cast<qsizetype>(unheard.count() * sound.format.sampleRateHz);
                sound.data.chop(std::min<qsizetype>(sound.data.size(), frames * sound.format.bytesPerFrame()));
            }
            changed.notify_all();
        }
        if (const auto saved = save(Clock::now(), false); !saved)
            consoleLine(saved.error());
    }

    /// Once, by whoever has set `over`; nobody changes the sound after that.
    tl::expected<void, QString> save(Clock::time_point end, bool toTheEnd)
    {
        auto written = WavFile::write(path, sound);
        if (observer)
            observer({path, firstSample.value_or(end), end, toTheEnd});
        return written;
    }
};

WavAudioPlayer::WavAudioPlayer(const QString &path, Pace pace, Observer observer)
    : m_state(std::make_shared<State>())
{
    m_state->path = path;
    m_state->pace = pace;
    m_state->observer = std::move(observer);
}

WavAudioPlayer::~WavAudioPlayer()
{
    m_state->stop();
}

tl::expected<void, QString> WavAudioPlayer::start(const AudioFormat &format)
{
    if (auto written = WavFile::write(m_state->path, {format, {}}); !written)
        return written;
    const std::lock_guard lock(m_state->mutex);
    m_state->sound.format = format;
    m_state->started = true;
    // Not joined: `ended` may destroy the player. The thread owns what it needs and ends with the sound.
    std::thread([state = m_state] { state->play(); }).detach();
    return {};
}

void WavAudioPlayer::write(const QByteArray &pcm)
{
    const std::lock_guard lock(m_state->mutex);
    if (!m_state->started || m_state->finished || m_state->over || pcm.isEmpty())
        return;
    const Clock::time_point now = Clock::now();
    if (!m_state->firstSample)
        m_state->firstSample = now;
    // A loudspeaker that has run dry goes on when there is something again.
    m_state->lastSample =
        std::max(m_state->lastSample, now) + m_state->durationOf(pcm.size() / m_state->sound.format.bytesPerFrame());
    m_state->sound.data += pcm;
}

void WavAudioPlayer::finish(Ended ended)
{
    Ended dropped; // destroyed after the lock is gone
    const std::lock_guard lock(m_state->mutex);
    if (!m_state->started || m_state->finished || m_state->over) {
        dropped = std::move(ended);
        return;
    }
    m_state->finished = true;
    m_state->ended = std::move(ended);
    m_state->changed.notify_all();
}

void WavAudioPlayer::stop()
{
    m_state->stop();
}

} // namespace vynlex

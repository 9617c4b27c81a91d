#include "platform/audio/WavMicrophone.h"

#include <algorithm>
#include <condition_variable>
#include <cstring>
#include <deque>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

#include "platform/audio/AudioConverter.h"
#include "platform/audio/TapSlot.h"
#include "platform/audio/WavFile.h"
#include "platform/dispatch/Console.h"

namespace vynlex {
namespace {

using Clock = std::chrono::steady_clock;

constexpr int stepsPerSecond = 100;

struct Sound {
    QString name;
    PcmBuffer pcm;
};

/// Mono samples of 16 bits in `format`'s channels and sample type.
QByteArray spread(const QByteArray &mono, const AudioFormat &format)
{
    QByteArray out;
    out.reserve(mono.size() / 2 * format.bytesPerFrame());
    for (qsizetype i = 0; i + 1 < mono.size(); i += 2) {
        std::int16_t sample = 0;
        std::memcpy(&sample, mono.constData() + i, sizeof sample);
        const float unit = static_cast<float>(sample) / 32768.0F;
        for (int channel = 0; channel < format.channelCount; ++channel) {
            if (format.sampleType == AudioFormat::SampleType::Int16)
                out.append(reinterpret_cast<const char *>(&sample), sizeof sample);
            else
                out.append(reinterpret_cast<const char *>(&unit), sizeof unit);
        }
    }
    return out;
}

tl::expected<PcmBuffer, QString> converted(const PcmBuffer &sound, const AudioFormat &format)
{
    if (sound.format == format)
        return sound;
    auto converter = AudioConverter::create(sound.format, {format.sampleRateHz, 1, AudioFormat::SampleType::Int16});
    if (!converter)
        return tl::unexpected(converter.error());
    // A second at a time, and what is left: nothing is rounded on the way.
    const qsizetype second = static_cast<qsizetype>(sound.format.sampleRateHz) * sound.format.bytesPerFrame();
    QByteArray mono;
    for (qsizetype offset = 0; offset < sound.data.size(); offset += second) {
        const PcmBuffer part{sound.format, sound.data.mid(offset, second)};
        const auto frames = static_cast<qsizetype>(static_cast<double>(part.frameLength()) * format.sampleRateHz /
                                                   sound.format.sampleRateHz);
        auto done = (*converter)->convert(part, frames);
        if (!done)
            return tl::unexpected(done.error());
        mono += done->data;
    }
    return PcmBuffer{format, spread(mono, format)};
}

} // namespace

struct WavMicrophone::State {
    Pace pace = Pace::RealTime;

    std::mutex mutex;
    std::condition_variable changed; // a sound, a tap, a start, a stop or an end of an engine
    std::deque<Sound> waiting;
    AudioFormat lastFormat;
    std::function<void(const Said &)> said;
};

namespace {

class WavAudioEngine final : public AudioEngine {
public:
    explicit WavAudioEngine(std::shared_ptr<WavMicrophone::State> microphone)
        : m_run(std::make_shared<Run>())
    {
        m_run->microphone = std::move(microphone);
    }

    ~WavAudioEngine() override
    {
        WavAudioEngine::stop();
        m_run->slot.remove();
        m_run->change([](Run &run) { run.quit = true; });
        if (!m_thread.joinable())
            return;
        // A tap, or the observer, may destroy the engine; the thread owns what it still needs.
        if (m_thread.get_id() == std::this_thread::get_id())
            m_thread.detach();
        else
            m_thread.join();
    }

    AudioFormat inputFormat() const override
    {
        const std::lock_guard lock(m_run->microphone->mutex);
        m_run->offered = m_run->nextFormat();
        return *m_run->offered;
    }

    void installTap(int bufferFrames, Tap tap) override
    {
        m_run->slot.install(bufferFrames, std::move(tap));
        m_run->change([](Run &run) { run.hasTap = true; });
    }

    void removeTap() override
    {
        m_run->change([](Run &run) { run.hasTap = false; });
        m_run->slot.remove();
    }

    void prepare() override {}

    tl::expected<void, QString> start() override
    {
        m_run->change([](Run &run) {
            if (run.session)
                return;
            // What the caller was told holds, even when another sound has come in between.
            run.format = run.offered ? *run.offered : run.nextFormat();
            run.offered.reset();
            run.microphone->lastFormat = run.format;
            run.session = run.slot.open(run.format);
        });
        const std::lock_guard lock(m_threadMutex);
        if (!m_thread.joinable())
            m_thread = std::thread([run = m_run] { run->loop(); });
        return {};
    }

    void stop() override
    {
        m_run->change([](Run &run) {
            run.session.reset();
            run.offered.reset();
        });
        m_run->slot.close();
    }

private:
    /// What the engine and its thread share. Everything but the slot is guarded by the microphone's mutex.
    struct Run {
        std::shared_ptr<WavMicrophone::State> microphone;
        TapSlot slot;
        bool hasTap = false;
        bool quit = false;
        std::optional<TapSlot::Session> session; ///< While running.
        AudioFormat format;
        std::optional<AudioFormat> offered; ///< What `inputFormat` has told since the last run.

        template<typename Function> void change(Function &&function)
        {
            const std::lock_guard lock(microphone->mutex);
            function(*this);
            microphone->changed.notify_all();
        }

        [[nodiscard]] AudioFormat nextFormat() const
        {
            if (session)
                return format;
            return microphone->waiting.empty() ? microphone->lastFormat : microphone->waiting.front().pcm.format;
        }

        void loop()
        {
            std::unique_lock lock(microphone->mutex);
            while (!quit) {
                if (session && hasTap)
                    deliver(lock, *session);
                else
                    microphone->changed.wait(lock);
            }
        }

        [[nodiscard]] bool isOn(TapSlot::Session ours) const { return !quit && hasTap && session == ours; }

        /// One run of the engine, or the part of it during which there is a tap.
        void deliver(std::unique_lock<std::mutex> &lock, TapSlot::Session ours)
        {
            const AudioFormat runFormat = format;
            const bool realTime = microphone->pace == WavMicrophone::Pace::RealTime;
            const Clock::time_point start = Clock::now();
            std::optional<Sound> sound;
            qsizetype position = 0; // in the sound's bytes
            WavMicrophone::Said said;
            std::int64_t silentSteps = 0;

            for (std::int64_t step = 1; isOn(ours); ++step) {
                if (realTime) {
                    const auto due = start + step * std::chrono::milliseconds(1000) / stepsPerSecond;
                    if (microphone->changed.wait_until(lock, due, [&] { return !isOn(ours); }))
                        return;
                } else if (!sound && silentSteps >= stepsPerSecond * WavMicrophone::fastSilence.count()) {
                    microphone->changed.wait(lock, [&] { return !isOn(ours) || !microphone->waiting.empty(); });
                    if (!isOn(ours))
                        return;
                }
                if (!sound && !microphone->waiting.empty()) {
                    sound = std::move(microphone->waiting.front());
                    microphone->waiting.pop_front();
                    position = 0;
                    silentSteps = 0;
                }
                lock.unlock();

                if (sound && position == 0) {
                    if (auto usable = converted(sound->pcm, runFormat)) {
                        sound->pcm = *std::move(usable);
                        said = {sound->name, Clock::now(), {}};
                    } else {
                        consoleLine(QStringLiteral("%1 is not heard: %2").arg(sound->name, usable.error()));
                        sound.reset();
                    }
                }
                // The steps are counted from the start, so that a rate which is no multiple of 100 keeps its pace.
                const auto rate = static_cast<std::int64_t>(runFormat.sampleRateHz);
                const qsizetype sizeBytes =
                    (rate * step / stepsPerSecond - rate * (step - 1) / stepsPerSecond) * runFormat.bytesPerFrame();
                QByteArray chunk = sound ? sound->pcm.data.mid(position, sizeBytes) : QByteArray();
                position += chunk.size();
                chunk.resize(sizeBytes, '\0');
                slot.feed(ours, chunk);
                const bool over = sound && position >= sound->pcm.data.size();
                silentSteps += sound ? 0 : 1;
                if (over)
                    said.end = Clock::now();

                lock.lock();
                if (over) {
                    sound.reset();
                    if (const auto observer = isOn(ours) ? microphone->said : nullptr) {
                        lock.unlock();
                        observer(said);
                        lock.lock();
                    }
                }
            }
        }
    };

    std::shared_ptr<Run> m_run;
    std::mutex m_threadMutex;
    std::thread m_thread;
};

} // namespace

WavMicrophone::WavMicrophone(Pace pace, const AudioFormat &idleFormat)
    : m_state(std::make_shared<State>())
{
    m_state->pace = pace;
    m_state->lastFormat = idleFormat;
}

tl::expected<void, QString> WavMicrophone::say(const QString &path)
{
    return WavFile::read(path).map([&](const PcmBuffer &sound) { say(path, sound); });
}

void WavMicrophone::say(const QString &name, const PcmBuffer &sound)
{
    const std::lock_guard lock(m_state->mutex);
    m_state->waiting.push_back({name, sound});
    m_state->changed.notify_all();
}

int WavMicrophone::waitingSounds() const
{
    const std::lock_guard lock(m_state->mutex);
    return static_cast<int>(m_state->waiting.size());
}

void WavMicrophone::setObserver(std::function<void(const Said &)> said)
{
    const std::lock_guard lock(m_state->mutex);
    m_state->said = std::move(said);
}

std::unique_ptr<AudioEngine> WavMicrophone::makeEngine() const
{
    return std::make_unique<WavAudioEngine>(m_state);
}

} // namespace vynlex

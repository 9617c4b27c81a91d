#include "tests/fakes/FakeAudio.h"

#include <QDebug>

#include <thread>
#include <utility>
#include <vector>

#include "platform/audio/TapSlot.h"
#include "platform/dispatch/Guarded.h"

namespace vynlex {
namespace {

template<typename Function> void runElsewhere(Function &&function)
{
    std::thread(std::forward<Function>(function)).join();
}

using NextFailure = Guarded<std::optional<QString>>;

tl::expected<void, QString> successUnless(NextFailure &failure)
{
    if (auto sentence = failure.exchange(std::nullopt))
        return tl::unexpected(*std::move(sentence));
    return {};
}

/// What captures and playbacks ask of the device. Apart from the lists of them, which would keep each other alive.
struct Device {
    struct Settings {
        AudioFormat inputFormat{48000, 1, AudioFormat::SampleType::Float32};
        FakeAudio::Playing playing = FakeAudio::Playing::UntilTold;
    };

    Guarded<Settings> settings;
    NextFailure engineStartFailure;
    NextFailure playerStartFailure;
};

} // namespace

struct FakeCapture::State {
    struct Counts {
        int start = 0;
        int stop = 0;
        int prepare = 0;
        int installTap = 0;
        int removeTap = 0;
        TapSlot::Session session = 0;
        bool alive = true;
    };

    Guarded<Counts> counts;
    TapSlot slot;
    std::shared_ptr<Device> device;

    void count(int Counts::*member)
    {
        counts.with([&](Counts &c) { ++(c.*member); });
    }
};

struct FakePlayback::State {
    struct Sound {
        std::optional<AudioFormat> format;
        QByteArray pcm;
        bool finished = false;
        bool stopped = false;
        bool hasEnded = false;
        std::optional<QString> takenAway;
        AudioPlayer::Ended ended;
    };

    Guarded<Sound> sound;
    std::shared_ptr<Device> device;

    /// Takes the right to call `ended`; an empty function when it must not run (any more, or yet).
    AudioPlayer::Ended claim()
    {
        return sound.with([](Sound &s) -> AudioPlayer::Ended {
            if (!s.finished || s.stopped || std::exchange(s.hasEnded, true))
                return {};
            return std::exchange(s.ended, {});
        });
    }

    void stop()
    {
        const AudioPlayer::Ended dropped = sound.with([](Sound &s) {
            s.stopped = s.stopped || !s.hasEnded;
            return std::exchange(s.ended, {});
        });
    }
};

struct FakeAudio::State {
    struct Lists {
        std::vector<std::shared_ptr<FakeCapture::State>> captures;
        std::vector<std::shared_ptr<FakePlayback::State>> playbacks;
        int setCategoryCount = 0;
        int setActiveCount = 0;
        bool active = false;
    };

    Guarded<Lists> lists;
    const std::shared_ptr<Device> device = std::make_shared<Device>();
    NextFailure categoryFailure;
    NextFailure activeFailure;
    std::shared_ptr<AudioSession> session;
};

namespace {

class FakeAudioEngine final : public AudioEngine {
public:
    explicit FakeAudioEngine(std::shared_ptr<FakeCapture::State> state)
        : m_state(std::move(state))
    {
    }

    ~FakeAudioEngine() override
    {
        m_state->slot.close();
        m_state->slot.remove();
        m_state->counts.with([](auto &counts) { counts.alive = false; });
    }

    AudioFormat inputFormat() const override
    {
        return m_state->device->settings.with([](auto &settings) { return settings.inputFormat; });
    }

    void installTap(int bufferFrames, Tap tap) override
    {
        m_state->count(&FakeCapture::State::Counts::installTap);
        m_state->slot.install(bufferFrames, std::move(tap));
    }

    void removeTap() override
    {
        m_state->count(&FakeCapture::State::Counts::removeTap);
        m_state->slot.remove();
    }

    void prepare() override { m_state->count(&FakeCapture::State::Counts::prepare); }

    tl::expected<void, QString> start() override
    {
        m_state->count(&FakeCapture::State::Counts::start);
        auto result = successUnless(m_state->device->engineStartFailure);
        if (result && inputFormat().sampleRateHz <= 0)
            result = tl::unexpected(QStringLiteral("There is no microphone."));
        if (result && !m_state->slot.isOpen()) {
            const TapSlot::Session session = m_state->slot.open(inputFormat());
            m_state->counts.with([&](auto &counts) { counts.session = session; });
        }
        return result;
    }

    void stop() override
    {
        m_state->count(&FakeCapture::State::Counts::stop);
        m_state->slot.close();
    }

private:
    std::shared_ptr<FakeCapture::State> m_state;
};

class FakeAudioPlayer final : public AudioPlayer {
public:
    explicit FakeAudioPlayer(std::shared_ptr<FakePlayback::State> state)
        : m_state(std::move(state))
    {
    }

    ~FakeAudioPlayer() override { m_state->stop(); }

    tl::expected<void, QString> start(const AudioFormat &format) override
    {
        if (auto result = successUnless(m_state->device->playerStartFailure); !result)
            return result;
        m_state->sound.with([&](auto &sound) {
            if (sound.format)
                qFatal("FakeAudioPlayer: a player is for one sound, and this one was started before.");
            if (format.sampleType != AudioFormat::SampleType::Int16 || format.sampleRateHz <= 0)
                qFatal("FakeAudioPlayer: a loudspeaker takes Int16 samples at a positive rate.");
            sound.format = format;
        });
        return {};
    }

    void write(const QByteArray &pcm) override
    {
        m_state->sound.with([&](auto &sound) {
            if (!sound.format || sound.finished)
                qFatal("FakeAudioPlayer: write belongs between start and finish.");
            if (pcm.size() % sound.format->bytesPerFrame() != 0)
                qFatal("FakeAudioPlayer: %lld bytes are not whole frames.", static_cast<long long>(pcm.size()));
            if (!sound.stopped)
                sound.pcm += pcm;
        });
    }

    void finish(Ended ended) override
    {
        const auto takenAway = m_state->sound.with([&](auto &sound) {
            if (!sound.format || std::exchange(sound.finished, true))
                qFatal("FakeAudioPlayer: finish comes once, after start.");
            if (!sound.stopped)
                sound.ended = std::move(ended);
            return sound.takenAway;
        });
        const auto playing = m_state->device->settings.with([](auto &settings) { return settings.playing; });
        if (!takenAway && playing == FakeAudio::Playing::UntilTold)
            return;
        // Not waited for, like everything that a loudspeaker does.
        std::thread([state = m_state, takenAway] {
            if (const Ended claimed = state->claim())
                claimed(takenAway ? tl::expected<void, QString>(tl::unexpected(*takenAway))
                                  : tl::expected<void, QString>());
        }).detach();
    }

    void stop() override { m_state->stop(); }

private:
    std::shared_ptr<FakePlayback::State> m_state;
};

class FakeAudioSession final : public AudioSession {
public:
    explicit FakeAudioSession(FakeAudio::State &state)
        : m_state(state)
    {
    }

    tl::expected<void, QString> setCategory(Category, Mode, Option) override
    {
        m_state.lists.with([](auto &lists) { ++lists.setCategoryCount; });
        return successUnless(m_state.categoryFailure);
    }

    tl::expected<void, QString> setActive(bool active) override
    {
        m_state.lists.with([](auto &lists) { ++lists.setActiveCount; });
        auto result = successUnless(m_state.activeFailure);
        if (result)
            m_state.lists.with([&](auto &lists) { lists.active = active; });
        return result;
    }

private:
    FakeAudio::State &m_state;
};

} // namespace

FakeCapture::FakeCapture(std::shared_ptr<State> state)
    : m_state(std::move(state))
{
}

bool FakeCapture::isAlive() const
{
    return m_state->counts.copy().alive;
}

bool FakeCapture::isRunning() const
{
    return m_state->slot.isOpen();
}

bool FakeCapture::hasTap() const
{
    return tapFrames() > 0;
}

int FakeCapture::tapFrames() const
{
    return m_state->slot.bufferFrames();
}

int FakeCapture::startCount() const
{
    return m_state->counts.copy().start;
}

int FakeCapture::stopCount() const
{
    return m_state->counts.copy().stop;
}

int FakeCapture::prepareCount() const
{
    return m_state->counts.copy().prepare;
}

int FakeCapture::installTapCount() const
{
    return m_state->counts.copy().installTap;
}

int FakeCapture::removeTapCount() const
{
    return m_state->counts.copy().removeTap;
}

PcmBuffer FakeCapture::silence() const
{
    const AudioFormat format = m_state->device->settings.with([](auto &settings) { return settings.inputFormat; });
    return {format, QByteArray(static_cast<qsizetype>(tapFrames()) * format.bytesPerFrame(), '\0')};
}

bool FakeCapture::hear(const PcmBuffer &buffer)
{
    if (!isRunning() || !hasTap())
        return false;
    if (buffer.format != m_state->device->settings.with([](auto &settings) { return settings.inputFormat; }))
        qFatal("FakeCapture: a microphone delivers its own format only.");
    if (buffer.frameLength() != tapFrames())
        qFatal("FakeCapture: the tap takes %d frames a buffer, not %lld.", tapFrames(),
               static_cast<long long>(buffer.frameLength()));
    runElsewhere([&] { m_state->slot.feed(m_state->counts.copy().session, buffer.data); });
    return true;
}

FakePlayback::FakePlayback(std::shared_ptr<State> state)
    : m_state(std::move(state))
{
}

std::optional<AudioFormat> FakePlayback::format() const
{
    return m_state->sound.with([](auto &sound) { return sound.format; });
}

QByteArray FakePlayback::pcm() const
{
    return m_state->sound.with([](auto &sound) { return sound.pcm; });
}

bool FakePlayback::isFinished() const
{
    return m_state->sound.with([](auto &sound) { return sound.finished; });
}

bool FakePlayback::wasStopped() const
{
    return m_state->sound.with([](auto &sound) { return sound.stopped; });
}

bool FakePlayback::hasEnded() const
{
    return m_state->sound.with([](auto &sound) { return sound.hasEnded; });
}

bool FakePlayback::complete()
{
    if (!isFinished() && !wasStopped())
        qFatal("FakePlayback: a sound that is not finished cannot be heard to its end.");
    const AudioPlayer::Ended ended = m_state->claim();
    if (ended)
        runElsewhere([&] { ended({}); });
    return static_cast<bool>(ended);
}

bool FakePlayback::takeAway(const QString &sentence)
{
    const bool later = m_state->sound.with([&](auto &sound) {
        const bool waiting = !sound.finished && !sound.stopped;
        if (waiting)
            sound.takenAway = sentence;
        return waiting;
    });
    if (later)
        return true;
    const AudioPlayer::Ended ended = m_state->claim();
    if (ended)
        runElsewhere([&] { ended(tl::unexpected(sentence)); });
    return static_cast<bool>(ended);
}

FakeAudio::FakeAudio()
    : m_state(std::make_shared<State>())
{
    m_state->session = std::make_shared<FakeAudioSession>(*m_state);
}

std::unique_ptr<AudioEngine> FakeAudio::makeEngine()
{
    const auto capture = std::make_shared<FakeCapture::State>();
    capture->device = m_state->device;
    m_state->lists.with([&](auto &lists) { lists.captures.push_back(capture); });
    return std::make_unique<FakeAudioEngine>(capture);
}

std::unique_ptr<AudioPlayer> FakeAudio::makePlayer()
{
    const auto playback = std::make_shared<FakePlayback::State>();
    playback->device = m_state->device;
    m_state->lists.with([&](auto &lists) { lists.playbacks.push_back(playback); });
    return std::make_unique<FakeAudioPlayer>(playback);
}

std::shared_ptr<AudioSession> FakeAudio::session() const
{
    return {m_state, m_state->session.get()};
}

int FakeAudio::captureCount() const
{
    return m_state->lists.with([](auto &lists) { return static_cast<int>(lists.captures.size()); });
}

FakeCapture FakeAudio::capture(int index) const
{
    return FakeCapture(m_state->lists.with([&](auto &lists) {
        if (index < 0 || index >= static_cast<int>(lists.captures.size()))
            qFatal("FakeAudio: there is no audio engine %d.", index);
        return lists.captures[static_cast<std::size_t>(index)];
    }));
}

FakeCapture FakeAudio::lastCapture() const
{
    return capture(captureCount() - 1);
}

int FakeAudio::playbackCount() const
{
    return m_state->lists.with([](auto &lists) { return static_cast<int>(lists.playbacks.size()); });
}

FakePlayback FakeAudio::playback(int index) const
{
    return FakePlayback(m_state->lists.with([&](auto &lists) {
        if (index < 0 || index >= static_cast<int>(lists.playbacks.size()))
            qFatal("FakeAudio: there is no player %d.", index);
        return lists.playbacks[static_cast<std::size_t>(index)];
    }));
}

FakePlayback FakeAudio::lastPlayback() const
{
    return playback(playbackCount() - 1);
}

int FakeAudio::setCategoryCount() const
{
    return m_state->lists.with([](auto &lists) { return lists.setCategoryCount; });
}

int FakeAudio::setActiveCount() const
{
    return m_state->lists.with([](auto &lists) { return lists.setActiveCount; });
}

bool FakeAudio::isSessionActive() const
{
    return m_state->lists.with([](auto &lists) { return lists.active; });
}

void FakeAudio::setInputFormat(const AudioFormat &format)
{
    m_state->device->settings.with([&](auto &settings) { settings.inputFormat = format; });
}

void FakeAudio::setPlaying(Playing playing)
{
    m_state->device->settings.with([&](auto &settings) { settings.playing = playing; });
}

void FakeAudio::failNextEngineStart(const QString &sentence)
{
    m_state->device->engineStartFailure.set(sentence);
}

void FakeAudio::failNextPlayerStart(const QString &sentence)
{
    m_state->device->playerStartFailure.set(sentence);
}

void FakeAudio::failNextSetCategory(const QString &sentence)
{
    m_state->categoryFailure.set(sentence);
}

void FakeAudio::failNextSetActive(const QString &sentence)
{
    m_state->activeFailure.set(sentence);
}

} // namespace vynlex

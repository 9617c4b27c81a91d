#include "tests/fakes/FakeAudio.h"

#include <QDebug>

#include <thread>
#include <utility>

namespace vynlex {
namespace {

tl::expected<void, QString> successUnless(FakeAudioDevice::NextFailure &failure)
{
    if (auto sentence = failure.exchange(std::nullopt))
        return tl::unexpected(*std::move(sentence));
    return {};
}

template<typename State> std::shared_ptr<State> lastOf(const std::vector<std::shared_ptr<State>> &all)
{
    if (all.empty())
        qFatal("FakeAudio: there is none yet.");
    return all.back();
}

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
        m_state->alive = false;
    }

    AudioFormat inputFormat() const override { return m_state->device->inputFormat.copy(); }

    void installTap(int bufferFrames, Tap tap) override
    {
        if (m_state->slot.bufferFrames() > 0)
            qFatal("FakeAudioEngine: a tap is removed before the next is installed.");
        m_state->slot.install(bufferFrames, std::move(tap));
    }

    void removeTap() override { m_state->slot.remove(); }

    void prepare() override {}

    tl::expected<void, QString> start() override
    {
        auto result = successUnless(m_state->device->engineStartFailure);
        if (result && inputFormat().sampleRateHz <= 0)
            result = tl::unexpected(QStringLiteral("There is no microphone."));
        if (result && !m_state->slot.isOpen())
            m_state->session = m_state->slot.open(inputFormat());
        return result;
    }

    void stop() override { m_state->slot.close(); }

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
        m_state->sound.with([&](auto &sound) {
            if (!sound.format || std::exchange(sound.finished, true))
                qFatal("FakeAudioPlayer: finish comes once, after start.");
            if (!sound.stopped)
                sound.ended = std::move(ended);
        });
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
        return successUnless(m_state.categoryFailure);
    }

    tl::expected<void, QString> setActive(bool active) override
    {
        auto result = successUnless(m_state.activeFailure);
        if (result)
            m_state.isActive = active;
        return result;
    }

private:
    FakeAudio::State &m_state;
};

} // namespace

bool FakeCapture::hearSilence()
{
    if (!isRunning() || !hasTap())
        return false;
    const QByteArray zeros(qsizetype{tapFrames()} * m_state->device->inputFormat.copy().bytesPerFrame(), '\0');
    std::thread([&] { m_state->slot.feed(m_state->session, zeros); }).join();
    return true;
}

void FakePlayback::State::stop()
{
    const AudioPlayer::Ended dropped = sound.with([](Sound &s) {
        s.stopped = s.stopped || !s.hasEnded;
        return std::exchange(s.ended, {});
    });
}

bool FakePlayback::end(const tl::expected<void, QString> &how)
{
    const AudioPlayer::Ended ended = m_state->sound.with([](Sound &s) -> AudioPlayer::Ended {
        if (!s.finished && !s.stopped)
            qFatal("FakePlayback: a sound that is not finished cannot end.");
        if (s.stopped || std::exchange(s.hasEnded, true))
            return {};
        return std::exchange(s.ended, {});
    });
    if (ended)
        std::thread([&] { ended(how); }).join();
    return static_cast<bool>(ended);
}

FakeAudio::FakeAudio()
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

FakeCapture FakeAudio::lastCapture() const
{
    return FakeCapture(lastOf(m_state->lists.copy().captures));
}

FakePlayback FakeAudio::lastPlayback() const
{
    return FakePlayback(lastOf(m_state->lists.copy().playbacks));
}

} // namespace vynlex

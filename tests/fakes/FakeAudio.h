#pragma once

#include <QByteArray>
#include <QString>

#include <atomic>
#include <memory>
#include <optional>
#include <tl/expected.hpp>
#include <vector>

#include "platform/audio/AudioEngine.h"
#include "platform/audio/AudioPlayer.h"
#include "platform/audio/AudioSession.h"
#include "platform/audio/TapSlot.h"
#include "platform/dispatch/Guarded.h"

namespace vynlex {

/// What engines and players ask of the fake device.
struct FakeAudioDevice {
    using NextFailure = Guarded<std::optional<QString>>;

    Guarded<AudioFormat> inputFormat{AudioFormat{48000, 1, AudioFormat::SampleType::Float32}};
    NextFailure engineStartFailure;
    NextFailure playerStartFailure;
};

/// One audio engine that was made, as the test sees it. A handle, good after the engine is gone. Any thread.
class FakeCapture {
public:
    struct State {
        std::atomic<bool> alive = true;
        std::atomic<TapSlot::Session> session = 0;
        TapSlot slot;
        std::shared_ptr<FakeAudioDevice> device;
    };
    explicit FakeCapture(std::shared_ptr<State> state)
        : m_state(std::move(state))
    {
    }

    [[nodiscard]] bool isAlive() const { return m_state->alive; }
    [[nodiscard]] bool isRunning() const { return m_state->slot.isOpen(); }
    [[nodiscard]] bool hasTap() const { return tapFrames() > 0; }
    [[nodiscard]] int tapFrames() const { return m_state->slot.bufferFrames(); } ///< 0 without a tap.

    /// The microphone hears one tap buffer of silence: the tap runs on a thread that is not the test's, and the call
    /// returns after it has. False when nobody listens (stopped, or no tap).
    bool hearSilence();

private:
    std::shared_ptr<State> m_state;
};

/// One sound that was to be played. A handle, good after the player is gone. Any thread.
class FakePlayback {
public:
    struct Sound {
        std::optional<AudioFormat> format;
        QByteArray pcm;
        bool finished = false;
        bool stopped = false;
        bool hasEnded = false;
        AudioPlayer::Ended ended;
    };
    struct State {
        Guarded<Sound> sound;
        std::shared_ptr<FakeAudioDevice> device;

        void stop();
    };
    explicit FakePlayback(std::shared_ptr<State> state)
        : m_state(std::move(state))
    {
    }

    [[nodiscard]] std::optional<AudioFormat> format() const { return sound().format; } ///< Absent before it started.
    [[nodiscard]] QByteArray pcm() const { return sound().pcm; }                       ///< Written so far.
    [[nodiscard]] bool isFinished() const { return sound().finished; }                 ///< `finish` was called.
    /// By `stop` or by the player's end, before it had ended.
    [[nodiscard]] bool wasStopped() const { return sound().stopped; }

    /// The last sample has been heard: `ended` runs on a thread that is not the test's, and the call returns after it
    /// has. False when it was stopped or has ended before. Before `finish` it ends the test program.
    bool complete() { return end({}); }
    /// The loudspeaker is taken away after `finish`: `ended` runs with `sentence`.
    bool takeAway(const QString &sentence) { return end(tl::unexpected(sentence)); }

private:
    [[nodiscard]] Sound sound() const { return m_state->sound.copy(); }
    bool end(const tl::expected<void, QString> &how);

    std::shared_ptr<State> m_state;
};

/// A microphone, a loudspeaker and an audio session that the test plays: they record what they were asked for and do
/// something when told. Any thread.
class FakeAudio {
public:
    FakeAudio();

    [[nodiscard]] std::unique_ptr<AudioEngine> makeEngine();
    [[nodiscard]] std::unique_ptr<AudioPlayer> makePlayer();
    [[nodiscard]] std::shared_ptr<AudioSession> session() const { return {m_state, m_state->session.get()}; }

    [[nodiscard]] int captureCount() const { return static_cast<int>(m_state->lists.copy().captures.size()); }
    /// Asking for one when there is none ends the test program.
    [[nodiscard]] FakeCapture lastCapture() const;
    [[nodiscard]] FakePlayback lastPlayback() const;

    [[nodiscard]] bool isSessionActive() const { return m_state->isActive; }

    /// The microphone's; 48 kHz, one channel, Float32 unless set. A rate of 0 is no microphone.
    void setInputFormat(const AudioFormat &format) { m_state->device->inputFormat.set(format); }

    /// Each counts once, for the next call of its kind.
    void failNextEngineStart(const QString &sentence) { m_state->device->engineStartFailure.set(sentence); }
    void failNextPlayerStart(const QString &sentence) { m_state->device->playerStartFailure.set(sentence); }
    void failNextSetCategory(const QString &sentence) { m_state->categoryFailure.set(sentence); }
    void failNextSetActive(const QString &sentence) { m_state->activeFailure.set(sentence); }

    struct State {
        struct Lists {
            std::vector<std::shared_ptr<FakeCapture::State>> captures;
            std::vector<std::shared_ptr<FakePlayback::State>> playbacks;
        };
        Guarded<Lists> lists;
        std::atomic<bool> isActive = false;
        /// Apart from the lists, which would keep each other alive.
        const std::shared_ptr<FakeAudioDevice> device = std::make_shared<FakeAudioDevice>();
        FakeAudioDevice::NextFailure categoryFailure;
        FakeAudioDevice::NextFailure activeFailure;
        std::shared_ptr<AudioSession> session;
    };

private:
    const std::shared_ptr<State> m_state = std::make_shared<State>();
};

} // namespace vynlex

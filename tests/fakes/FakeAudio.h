#pragma once

#include <QByteArray>
#include <QString>

#include <memory>
#include <optional>
#include <tl/expected.hpp>

#include "platform/audio/AudioEngine.h"
#include "platform/audio/AudioPlayer.h"
#include "platform/audio/AudioSession.h"

namespace vynlex {

/// One audio engine that was made, as the test sees it. A handle, good after the engine is gone. Any thread.
class FakeCapture {
public:
    struct State;
    explicit FakeCapture(std::shared_ptr<State> state);

    [[nodiscard]] bool isAlive() const;
    [[nodiscard]] bool isRunning() const;
    [[nodiscard]] bool hasTap() const;
    [[nodiscard]] int tapFrames() const; ///< 0 without a tap.

    /// Calls so far, also those that changed nothing or failed.
    [[nodiscard]] int startCount() const;
    [[nodiscard]] int stopCount() const;
    [[nodiscard]] int prepareCount() const;
    [[nodiscard]] int installTapCount() const;
    [[nodiscard]] int removeTapCount() const;

    /// One tap buffer of the input format: all samples zero.
    [[nodiscard]] PcmBuffer silence() const;

    /// The microphone hears `buffer`: the tap runs on a thread that is not the test's, and the call returns after it
    /// has. False when nobody listens (stopped, or no tap). A buffer of another format than the input's, or of another
    /// length than the tap's, ends the test program.
    bool hear(const PcmBuffer &buffer);

private:
    std::shared_ptr<State> m_state;
};

/// One sound that was to be played. A handle, good after the player is gone. Any thread.
class FakePlayback {
public:
    struct State;
    explicit FakePlayback(std::shared_ptr<State> state);

    [[nodiscard]] std::optional<AudioFormat> format() const; ///< Absent before a successful start.
    [[nodiscard]] QByteArray pcm() const;                    ///< Written so far.
    [[nodiscard]] bool isFinished() const;                   ///< `finish` was called.
    [[nodiscard]] bool wasStopped() const;                   ///< By `stop` or by the player's end, before it had ended.
    [[nodiscard]] bool hasEnded() const;                     ///< `ended` has been called, or is about to.

    /// The last sample has been heard: `ended` runs on a thread that is not the test's, and the call returns after it
    /// has. False when it was stopped or has ended before. Before `finish` it ends the test program.
    bool complete();
    /// The loudspeaker is taken away: `ended` runs with `sentence`, now or as soon as `finish` is called.
    bool takeAway(const QString &sentence);

private:
    std::shared_ptr<State> m_state;
};

/// A microphone, a loudspeaker and an audio session that the test plays: they record what they were asked for and do
/// something when told. Any thread.
class FakeAudio {
public:
    enum class Playing {
        UntilTold,      ///< A sound ends when the test says so.
        CompletesAtOnce ///< `ended` runs on another thread as soon as `finish` is called.
    };

    FakeAudio();

    [[nodiscard]] std::unique_ptr<AudioEngine> makeEngine();
    [[nodiscard]] std::unique_ptr<AudioPlayer> makePlayer();
    [[nodiscard]] std::shared_ptr<AudioSession> session() const;

    /// In the order in which they were made; asking for one that does not exist ends the test program.
    [[nodiscard]] int captureCount() const;
    [[nodiscard]] FakeCapture capture(int index) const;
    [[nodiscard]] FakeCapture lastCapture() const;
    [[nodiscard]] int playbackCount() const;
    [[nodiscard]] FakePlayback playback(int index) const;
    [[nodiscard]] FakePlayback lastPlayback() const;

    [[nodiscard]] int setCategoryCount() const;
    [[nodiscard]] int setActiveCount() const;
    [[nodiscard]] bool isSessionActive() const;

    /// The microphone's; 48 kHz, one channel, Float32 unless set. A rate of 0 is no microphone.
    void setInputFormat(const AudioFormat &format);
    /// Counts for every later player.
    void setPlaying(Playing playing);

    /// Each counts once, for the next call of its kind.
    void failNextEngineStart(const QString &sentence);
    void failNextPlayerStart(const QString &sentence);
    void failNextSetCategory(const QString &sentence);
    void failNextSetActive(const QString &sentence);

    struct State;

private:
    std::shared_ptr<State> m_state;
};

} // namespace vynlex

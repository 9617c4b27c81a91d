#pragma once

#include <chrono>

#include "platform/audio/AudioPlayer.h"

namespace vynlex {

/// A WAV file in place of the loudspeaker. The file is complete when `ended` or the observer runs, and when `stop` or
/// the destructor has returned; it holds what was heard.
class WavAudioPlayer final : public AudioPlayer {
public:
    enum class Pace {
        RealTime,       ///< Heard at the rate of the format, from the first write.
        AsFastAsWritten ///< Heard at once.
    };

    struct Heard {
        QString path;
        std::chrono::steady_clock::time_point begin; ///< The first sample was written; the end, if there was none.
        std::chrono::steady_clock::time_point end;
        bool toTheEnd = false; ///< False when it was stopped.
    };
    /// Once for every player that was started, before `ended`, on the player's thread or the one that stops it.
    using Observer = std::function<void(const Heard &)>;

    explicit WavAudioPlayer(const QString &path, Pace pace, Observer observer = {});
    ~WavAudioPlayer() override;

    /// Fails when the file cannot be written.
    tl::expected<void, QString> start(const AudioFormat &format) override;
    void write(const QByteArray &pcm) override;
    void finish(Ended ended) override;
    void stop() override;

private:
    struct State;
    std::shared_ptr<State> m_state;
};

} // namespace vynlex

#pragma once

#include "platform/audio/AudioPlayer.h"

namespace vynlex {

/// The device's default loudspeaker, through QtMultimedia. `start` waits for the sound server (5 s at most). `ended`
/// runs on the audio thread.
class QtAudioPlayer final : public AudioPlayer {
public:
    /// A device that was taken away says nothing; it is noticed after so long without taking sound.
    static constexpr int watchdogMs = 2000;

    QtAudioPlayer();
    ~QtAudioPlayer() override;

    tl::expected<void, QString> start(const AudioFormat &format) override;
    void write(const QByteArray &pcm) override;
    void finish(Ended ended) override;
    void stop() override;

private:
    struct Playback;
    std::shared_ptr<Playback> m_playback;
};

} // namespace vynlex

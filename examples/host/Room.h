#pragma once

#include <QString>
#include <QTemporaryDir>

#include <chrono>
#include <memory>
#include <optional>
#include <tl/expected.hpp>

#include "platform/audio/AudioEngine.h"
#include "platform/audio/AudioPlayer.h"
#include "platform/audio/WavMicrophone.h"
#include "platform/dispatch/Guarded.h"

namespace host {

/// The air around a phone without microphone and loudspeaker: what is said into it comes from WAV files, and what it
/// says goes into WAV files.
///
/// Main thread, except that engines and players made by it work wherever the kit uses them.
class Room {
public:
    enum class Speed { RealTime, AsFastAsAccepted };

    explicit Room(Speed speed);

    [[nodiscard]] std::unique_ptr<vynlex::AudioEngine> makeAudioEngine() const;
    [[nodiscard]] std::unique_ptr<vynlex::AudioPlayer> makeAudioPlayer();

    [[nodiscard]] Speed speed() const { return m_speed; }
    /// The loudspeaker's speed from the next sound on; `speed` unless set.
    void setPlayback(Speed speed) { m_playback.set(speed); }

    /// Says a recording: the running microphone hears it now, or the next one from its start. Fails with one line when
    /// the file is no such recording.
    tl::expected<void, QString> say(const QString &wavFile);

    /// When the last of what was said had been delivered; nothing while it is under way.
    [[nodiscard]] std::optional<std::chrono::steady_clock::time_point> speechEnded() const;

    /// The next sound from the loudspeaker goes into this file; sounds that nobody asked for go into a temporary one.
    void record(const QString &wavFile);
    [[nodiscard]] bool isRecording() const { return !m_recording.copy().isEmpty(); }

private:
    const Speed m_speed;
    vynlex::Guarded<Speed> m_playback;
    vynlex::WavMicrophone m_microphone;
    QTemporaryDir m_temporary;
    vynlex::Guarded<QString> m_recording;
    std::shared_ptr<vynlex::Guarded<std::optional<std::chrono::steady_clock::time_point>>> m_speechEnded;
};

} // namespace host

#pragma once

#include <QString>

#include <chrono>
#include <memory>
#include <optional>
#include <tl/expected.hpp>

#include "platform/audio/AudioEngine.h"
#include "platform/audio/AudioPlayer.h"

namespace host {

/// The air around a phone without microphone and loudspeaker: what is said into it comes from WAV files, and what it
/// says goes into WAV files.
///
/// Main thread, except that engines and players made by it work wherever the kit uses them.
class Room {
public:
    enum class Speed { RealTime, AsFastAsAccepted };

    explicit Room(Speed speed);
    ~Room();

    [[nodiscard]] std::unique_ptr<vynlex::AudioEngine> makeAudioEngine();
    [[nodiscard]] std::unique_ptr<vynlex::AudioPlayer> makeAudioPlayer();

    /// Says a recording: the running microphone hears it now, or the next one from its start. Fails with one line when
    /// the file is no such recording.
    tl::expected<void, QString> say(const QString &wavFile);

    /// When the last of what was said had been delivered; nothing while it is under way.
    [[nodiscard]] std::optional<std::chrono::steady_clock::time_point> speechEnded() const;

    /// The next sound from the loudspeaker goes into this file.
    void record(const QString &wavFile);

private:
    struct State;
    std::shared_ptr<State> m_state;
};

} // namespace host

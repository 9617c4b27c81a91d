#pragma once

#include <QString>

#include <chrono>
#include <functional>
#include <memory>
#include <tl/expected.hpp>

#include "platform/audio/AudioEngine.h"

namespace vynlex {

/// WAV files in place of a microphone. Its engines deliver, one after the other, the sounds that were given to `say`,
/// and between them the silence of a quiet room. A handle: copies are the same microphone. Any thread.
///
/// Sounds wait until an engine runs that has a tap. The format of the input is that of the sound that is next when
/// `inputFormat` is asked or the engine starts, else that of the last run; while an engine runs, sounds of another
/// format are converted to its own (a running format above 48 kHz has no converter: a console line, and the sound is
/// skipped). A sound that has begun when the engine is stopped is over.
class WavMicrophone {
public:
    enum class Pace {
        RealTime,        ///< In steps of 10 ms, as a device does it, and silence for ever.
        AsFastAsAccepted ///< At once; then `fastSilence` of silence, and nothing until the next sound.
    };
    /// Enough for a recogniser to find the end of an utterance.
    static constexpr std::chrono::seconds fastSilence{2};

    /// A sound that the tap has heard to its end.
    struct Said {
        QString name;
        std::chrono::steady_clock::time_point begin; ///< Its first sample was handed to the tap.
        std::chrono::steady_clock::time_point end;   ///< Its last.
    };

    /// `idleFormat` is the input's format as long as no sound has been given.
    explicit WavMicrophone(Pace pace, const AudioFormat &idleFormat = {48000, 1, AudioFormat::SampleType::Int16});

    /// Reads the file now and says it under its path as the name. Fails as `WavFile::read` does.
    tl::expected<void, QString> say(const QString &path);
    /// `sound` must have a frame, 1 or 2 channels, and 8000 to 192000 Hz, as files have that were read.
    void say(const QString &name, const PcmBuffer &sound);

    /// Given, and not begun yet.
    [[nodiscard]] int waitingSounds() const;

    /// Runs on the audio thread, after the tap. Set before the first engine starts.
    void setObserver(std::function<void(const Said &)> said);

    [[nodiscard]] std::unique_ptr<AudioEngine> makeEngine() const;

    struct State;

private:
    std::shared_ptr<State> m_state;
};

} // namespace vynlex

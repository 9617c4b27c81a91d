#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string_view>
#include <vector>

#include "sandbox/recognition/StreamingRecogniser.h"
#include "sandbox/synthesis/VoiceBank.h"

namespace sandbox {

/// Hears one turn. From one thread at a time; a call may take as long as a decoding.
class TurnRecogniser {
public:
    virtual ~TurnRecogniser() = default;

    /// 16 kHz mono. The events that the samples caused, in order of time.
    virtual std::vector<RecognitionEvent> feed(std::span<const std::int16_t> samples) = 0;
    /// The turn has ended: the events of what was still open.
    virtual std::vector<RecognitionEvent> finish() = 0;
};

/// What hears and speaks behind the protocol. Any thread; calls other than `hasVoice` take long. A failure is any
/// std::exception.
class SpeechEngines {
public:
    virtual ~SpeechEngines() = default;

    /// `locale` is one that the service has ("hi-IN").
    virtual std::unique_ptr<TurnRecogniser> startRecogniser(std::string_view locale) = 0;

    [[nodiscard]] virtual bool hasVoice(std::string_view name) const = 0;
    /// As VoiceBank::speak.
    virtual void speak(std::string_view text, std::string_view voiceName, int sampleRateHz,
                       const VoiceBank::Sink &sink) = 0;
};

/// PocketSphinx and espeak-ng.
std::shared_ptr<SpeechEngines> makeSpeechEngines(std::shared_ptr<RecogniserModels> models);

} // namespace sandbox

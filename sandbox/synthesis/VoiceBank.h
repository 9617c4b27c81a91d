#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <string_view>

namespace sandbox {

/// The service's voices, spoken by espeak-ng in-process. espeak-ng is one global engine: calls take turns.
class VoiceBank {
public:
    /// Throws std::runtime_error when espeak-ng or its data is not there.
    VoiceBank();

    /// True for the catalogue's voices ("en-US-AriaNeural", "hi-IN-SwaraNeural", ...) and those of "en-IN".
    [[nodiscard]] bool has(std::string_view voiceName) const;

    /// Pieces of 16-bit mono PCM as they are made. Return false to stop.
    using Sink = std::function<bool(std::span<const std::int16_t>)>;

    /// Speaks plain text (already freed of mark-up) and returns when all of it went to `sink`, or `sink` refused more.
    /// `sampleRateHz` 8000 to 48000. Any thread; blocks. Throws std::invalid_argument for an unknown voice.
    void speak(std::string_view text, std::string_view voiceName, int sampleRateHz, const Sink &sink);
};

} // namespace sandbox

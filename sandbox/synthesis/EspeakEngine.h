#pragma once

#include <cstdint>
#include <functional>
#include <mutex>
#include <span>
#include <string>
#include <string_view>

namespace sandbox {

/// Who speaks, and how. Ranges and units are espeak-ng's own.
struct Manner {
    std::string voice; ///< language and variant: "hi", "en-us+f3"
    int wordsPerMinute = 165;
    int pitch = 50; ///< 0 to 99
};

/// espeak-ng, which has one global state: the only place that calls it.
///
/// Any thread; a call waits for the one that runs. A call makes a sentence, so none waits long.
class EspeakEngine {
public:
    /// Starts it on first use. Throws std::runtime_error when its data is not there.
    static EspeakEngine &instance();

    EspeakEngine(const EspeakEngine &) = delete;
    EspeakEngine &operator=(const EspeakEngine &) = delete;

    [[nodiscard]] int sampleRateHz() const { return m_sampleRateHz; }

    /// 16-bit mono PCM in pieces of about 60 ms; return false to stop.
    using Sink = std::function<bool(std::span<const std::int16_t>)>;

    /// Speaks UTF-8 `text`, with the pause that follows a sentence if `endPause`. The engine is held meanwhile: `sink`
    /// must not wait for anything. Throws std::invalid_argument when espeak-ng has no such voice.
    void speak(std::string_view text, const Manner &manner, bool endPause, const Sink &sink);

    /// The phonemes of UTF-8 `text` in the International Phonetic Alphabet, as espeak-ng writes it: words separated by
    /// spaces, stress marks before syllables. Throws like `speak`.
    std::string ipa(std::string_view text, const std::string &voice);

private:
    EspeakEngine();
    void select(const std::string &voice);

    std::mutex m_mutex;
    int m_sampleRateHz;
    std::string m_voice;
};

} // namespace sandbox

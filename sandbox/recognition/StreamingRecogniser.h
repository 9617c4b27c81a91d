#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace sandbox {

/// Times count from the first sample fed, in the speech protocol's unit.
using Ticks = std::chrono::duration<std::int64_t, std::ratio<1, 10'000'000>>;

struct SpeechStarted {
    Ticks offset;
};
struct SpeechEnded {
    Ticks offset;
};
/// What has been understood of the running utterance so far: lower case, no punctuation.
struct Hypothesis {
    std::string text;
    Ticks offset;
    Ticks duration;
};
/// The end of an utterance. `text` is the sentence with capitals and punctuation; empty when nothing was recognised
/// (NoMatch).
struct RecognisedPhrase {
    std::string text;
    Ticks offset;
    Ticks duration;
    double confidence;
};

using RecognitionEvent = std::variant<SpeechStarted, Hypothesis, SpeechEnded, RecognisedPhrase>;

class RecogniserModels; // grammars and acoustic model, loaded once, shared

/// Recognises one stream (one turn) of 16 kHz, 16-bit, mono speech in one language: end-pointing, decoding, rejection.
///
/// Not thread-safe; use it from one thread at a time. `feed` may take as long as a decoding (about 0.1 of real time of
/// the utterance), so call it off the I/O thread.
class StreamingRecogniser {
public:
    /// `locale` as in the protocol ("en-US", "hi-IN"). Throws std::invalid_argument for a locale that is not supported.
    StreamingRecogniser(std::shared_ptr<RecogniserModels> models, std::string_view locale);
    ~StreamingRecogniser();
    StreamingRecogniser(StreamingRecogniser &&) noexcept;

    /// Any number of samples, zero included. The events that they caused, in order of time.
    [[nodiscard]] std::vector<RecognitionEvent> feed(std::span<const std::int16_t> samples);

    /// The stream has ended: the events of what was still open. Trailing silence causes none.
    [[nodiscard]] std::vector<RecognitionEvent> finish();

private:
    struct State;
    std::unique_ptr<State> m_state;
};

} // namespace sandbox

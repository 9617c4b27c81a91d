#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <optional>
#include <span>
#include <vector>

namespace sandbox {

/// Finds utterances in one stream of 16 kHz, 16-bit mono sound.
///
/// Works on frames of 10 ms. A frame is loud when its level stands out of the tracked noise floor, in a low band
/// (voiced sounds) or in a pre-emphasised one (fricatives). Speech begins when half of 120 ms is loud, and is over
/// after 600 ms without; an utterance is cut at 15 s.
class EndPointer {
public:
    static constexpr int sampleRateHz = 16000;
    static constexpr std::size_t frameSamples = 160;

    enum class Event {
        Started,
        Paused, ///< 300 ms of quiet: what `clip` gives now is what it will give if nothing more is said
        Ended,
    };

    /// At most one event a frame.
    std::optional<Event> push(std::span<const std::int16_t, frameSamples> frame);

    /// The stream has ended: `Ended` if an utterance was open.
    std::optional<Event> finish();

    /// The running utterance, or after `Ended` the last one, cut to 80 ms around its speech. Samples from the start of
    /// the stream.
    struct Clip {
        std::int64_t firstSample = 0;
        std::int64_t endSample = 0;
        std::vector<std::int16_t> samples; ///< pauses are shortened to 120 ms
    };
    [[nodiscard]] Clip clip() const;

    [[nodiscard]] bool inSpeech() const { return m_inSpeech; }

    /// Frames since the beginning of the running utterance's speech.
    [[nodiscard]] std::int64_t speechFrames() const { return m_inSpeech ? m_count - m_firstLoud : 0; }

private:
    struct Levels {
        double low = 0;
        double high = 0;
    };
    struct Frame {
        std::array<std::int16_t, frameSamples> samples;
        Levels db;
        bool loud;
    };

    Levels measure(std::span<const std::int16_t, frameSamples> frame);
    void trackFloor(const Levels &db);
    [[nodiscard]] bool standsOut(const Levels &db, double marginDb) const;
    [[nodiscard]] std::int64_t firstKept() const { return m_count - static_cast<std::int64_t>(m_frames.size()); }
    [[nodiscard]] const Frame &frameAt(std::int64_t index) const;
    void begin();
    void forget();

    // Filter memories.
    double m_dcInput = 0;
    double m_dcOutput = 0;
    double m_lowpass = 0;
    double m_previousInput = 0;

    std::deque<Levels> m_recent;   ///< levels of the last few frames, to smooth them
    std::deque<Levels> m_smoothed; ///< of the floor's window
    Levels m_floor;

    std::deque<Frame> m_frames; ///< from the running utterance, or a little past, to now
    std::int64_t m_count = 0;   ///< frames pushed
    bool m_inSpeech = false;
    std::int64_t m_firstLoud = 0;
    std::int64_t m_lastLoud = -1;
    std::int64_t m_clipStart = 0;
};

} // namespace sandbox

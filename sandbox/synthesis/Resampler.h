#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

struct SpeexResamplerState_;

namespace sandbox {

/// One stream of 16-bit mono PCM from one rate to another. Frames out over the whole stream = frames in x ratio, to
/// within one frame; the filter's delay is taken off the beginning.
class Resampler {
public:
    /// Rates 8000 to 192000 Hz; throws std::invalid_argument for others.
    Resampler(int inputRateHz, int outputRateHz);

    std::vector<std::int16_t> process(std::span<const std::int16_t> input);

    /// What the filter still holds. The stream is over then.
    std::vector<std::int16_t> finish();

private:
    struct Deleter {
        void operator()(SpeexResamplerState_ *state) const;
    };

    std::unique_ptr<SpeexResamplerState_, Deleter> m_state; ///< null: the rates are equal
    double m_ratio;
};

} // namespace sandbox

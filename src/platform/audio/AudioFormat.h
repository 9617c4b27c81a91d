#pragma once

#include <cstdint>

namespace vynlex {

/// Linear PCM. Samples of several channels are interleaved.
struct AudioFormat {
    enum class SampleType : std::uint8_t { Int16, Float32 };

    double sampleRateHz = 0;
    int channelCount = 1;
    SampleType sampleType = SampleType::Int16;

    [[nodiscard]] int bytesPerFrame() const { return channelCount * (sampleType == SampleType::Int16 ? 2 : 4); }

    bool operator==(const AudioFormat &) const = default;
};

} // namespace vynlex

#pragma once

#include <QString>

#include <memory>
#include <tl/expected.hpp>

#include "platform/audio/PcmBuffer.h"

namespace vynlex {

/// Turns buffers of one format into 16-bit mono buffers of another sample rate. Channels are mixed to one.
///
/// One stream per instance; buffers in order, on one thread at a time. Stateful: the filter's tail carries over, so
/// that no sample is dropped or repeated at a buffer's edge.
class AudioConverter {
public:
    /// `input` 8000 to 192000 Hz, 1 or 2 channels, either sample type. `output` must be Int16 mono, 8000 to 48000 Hz.
    /// Fails when no filter exists for the pair of formats.
    static tl::expected<std::unique_ptr<AudioConverter>, QString> create(const AudioFormat &input,
                                                                         const AudioFormat &output);
    ~AudioConverter();

    /// Exactly `frameCapacity` frames out, made from all of `input`. Callers compute the capacity as output rate times
    /// the duration of `input`, truncated. Fails on a buffer of another format.
    tl::expected<PcmBuffer, QString> convert(const PcmBuffer &input, qsizetype frameCapacity);

private:
    struct State;
    explicit AudioConverter(std::unique_ptr<State> state);
    std::unique_ptr<State> m_state;
};

} // namespace vynlex

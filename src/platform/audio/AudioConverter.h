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
///
/// A buffer's frames are spread evenly over the frames that it becomes, so 2048 frames at 48 kHz that become 682 at
/// 16 kHz run 0.1 % fast. The sound comes out later by 80 frames of the slower rate and 16 of the input's (5.3 ms from
/// 48 to 16 kHz), the same for buffers of every size above 32 frames. Between equal rates samples pass unchanged and
/// without delay.
class AudioConverter {
public:
    /// `input` 8000 to 192000 Hz, 1 or 2 channels, either sample type. `output` must be Int16 mono, 8000 to 48000 Hz.
    /// Fails when no filter exists for the pair of formats.
    static tl::expected<std::unique_ptr<AudioConverter>, QString> create(const AudioFormat &input,
                                                                         const AudioFormat &output);
    ~AudioConverter();

    /// Exactly `frameCapacity` frames out, made from all of `input`. Callers compute the capacity as output rate times
    /// the duration of `input`, truncated. Fails on a buffer of another format, of more than 2^20 frames, and on a
    /// capacity that is further than one frame from that product; a failure leaves the stream as it was.
    tl::expected<PcmBuffer, QString> convert(const PcmBuffer &input, qsizetype frameCapacity);

private:
    struct State;
    explicit AudioConverter(std::unique_ptr<State> state);
    std::unique_ptr<State> m_state;
};

} // namespace vynlex

#pragma once

#include <QString>

#include <functional>
#include <tl/expected.hpp>

#include "platform/audio/PcmBuffer.h"

namespace vynlex {

/// Port: the microphone. One input node with one bus (0), which holds at most one tap.
///
/// Functions may be called from any thread, one at a time or not. The tap runs on the audio thread and must only hand
/// the buffer on; after `removeTap` or `stop` has returned it is not called any more. `stop` does not wait for the
/// device (it takes less than a frame). Destroying the engine stops it. A microphone that is not there, or taken away
/// while it runs, gives silence from then on as far as the tap is concerned (no buffers), and a console line.
class AudioEngine {
public:
    using Tap = std::function<void(const PcmBuffer &)>;

    virtual ~AudioEngine() = default;

    /// The hardware format of the input bus. With no microphone its sample rate is 0.
    [[nodiscard]] virtual AudioFormat inputFormat() const = 0;

    /// Every call of `tap` gets exactly `bufferFrames` frames of the hardware format. Replaces no tap: remove first.
    virtual void installTap(int bufferFrames, Tap tap) = 0;
    virtual void removeTap() = 0; ///< Nothing to remove is fine.

    virtual void prepare() = 0;
    /// Fails with a sentence when there is no microphone or it cannot be opened. Starting a running engine is fine.
    virtual tl::expected<void, QString> start() = 0;
    virtual void stop() = 0;
};

} // namespace vynlex

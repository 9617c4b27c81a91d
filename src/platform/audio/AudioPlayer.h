#pragma once

#include <QByteArray>
#include <QString>

#include <functional>
#include <tl/expected.hpp>

#include "platform/audio/AudioFormat.h"

namespace vynlex {

/// Port: one sound on the loudspeaker, played while it is still arriving. Use once.
///
/// Functions may be called from any thread and do not block. `ended` runs on a thread of the player's choice, exactly
/// once after `finish` (unless `stop` or the destructor came first, then not at all): with success when the last sample
/// has been heard, or with a sentence when the device was taken away.
class AudioPlayer {
public:
    using Ended = std::function<void(tl::expected<void, QString>)>;

    virtual ~AudioPlayer() = default;

    /// Opens the loudspeaker for Int16 frames of `format`. Fails with a sentence when there is none.
    virtual tl::expected<void, QString> start(const AudioFormat &format) = 0;
    /// Whole frames. Sound begins with the first call, not after the last.
    virtual void write(const QByteArray &pcm) = 0;
    /// No more will be written.
    virtual void finish(Ended ended) = 0;
    /// Silent within 50 ms. What was not heard yet is dropped.
    virtual void stop() = 0;
};

} // namespace vynlex

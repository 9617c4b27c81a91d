#pragma once

#include <QByteArray>

#include "platform/audio/AudioFormat.h"

namespace vynlex {

/// A run of frames. `data.size()` is a multiple of `format.bytesPerFrame()`. Cheap to copy (the bytes are shared).
struct PcmBuffer {
    AudioFormat format;
    QByteArray data;

    [[nodiscard]] qsizetype frameLength() const { return data.size() / format.bytesPerFrame(); }
};

} // namespace vynlex

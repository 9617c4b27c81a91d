#pragma once

#include <QByteArray>

#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>

#include "platform/audio/PcmBuffer.h"

namespace vynlex {

/// The input bus of an engine: at most one tap, open while the engine runs, fed by the audio thread.
///
/// Devices deliver chunks of any size; the tap gets buffers of exactly its size. Any thread. Once `remove` or `close`
/// has returned, the tap is not called any more: both wait for a call that is running, unless they come from within it.
class TapSlot {
public:
    using Tap = std::function<void(const PcmBuffer &)>;
    /// One run of the engine. What a device still delivers for an earlier run is ignored.
    using Session = std::uint64_t;

    /// Ends the process when there is a tap already.
    void install(int bufferFrames, Tap tap);
    void remove();

    /// From now on the tap hears what is fed for this session. A remainder of before is forgotten.
    Session open(const AudioFormat &format);
    void close();

    /// Calls the tap once for every buffer that is full. Whole frames are not required of `data`. Ignored while closed
    /// or without a tap.
    void feed(Session session, const QByteArray &data);

    /// 0 without a tap.
    [[nodiscard]] int bufferFrames() const;
    [[nodiscard]] bool isOpen() const;

private:
    mutable std::recursive_mutex m_mutex;
    std::shared_ptr<const Tap> m_tap; // shared, because a tap may remove itself while it runs
    int m_bufferFrames = 0;
    bool m_open = false;
    Session m_session = 0;
    AudioFormat m_format;
    QByteArray m_remainder;
};

} // namespace vynlex

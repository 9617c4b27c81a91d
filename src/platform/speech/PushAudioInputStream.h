#pragma once

#include <QByteArray>

#include <functional>
#include <memory>

namespace vynlex {

/// Audio on its way to a recogniser: 16 kHz, 16-bit, mono, little-endian PCM. A handle: copies share one stream.
///
/// Any thread. Writing never blocks; what is written before a recogniser listens is kept for it. Writing to a closed
/// stream does nothing.
class PushAudioInputStream {
public:
    static PushAudioInputStream create();

    void write(const QByteArray &pcm);
    void close(); ///< The end of the input. Closing twice is fine.

    [[nodiscard]] bool isClosed() const;

    /// For the recogniser: `onData` is called, on the writing thread, with what was written before and with every later
    /// piece; `onClosed` once at the end. Replaces the previous reader; empty functions let go.
    void setReader(std::function<void(const QByteArray &)> onData, std::function<void()> onClosed);

private:
    struct State;
    explicit PushAudioInputStream(std::shared_ptr<State> state);
    std::shared_ptr<State> m_state;
};

} // namespace vynlex

#include "platform/speech/PushAudioInputStream.h"

#include <mutex>

namespace vynlex {

/// The lock is held while the reader runs: pieces of several writers stay in order, and once `setReader` has returned
/// on another thread the previous reader is not running any more. It is recursive so that a reader may call the stream.
struct PushAudioInputStream::State {
    struct Reader {
        std::function<void(const QByteArray &)> onData;
        std::function<void()> onClosed;
    };

    std::recursive_mutex mutex;
    std::shared_ptr<const Reader> reader;
    QByteArray kept;
    bool closed = false;
};

PushAudioInputStream::PushAudioInputStream(std::shared_ptr<State> state)
    : m_state(std::move(state))
{
}

PushAudioInputStream PushAudioInputStream::create()
{
    return PushAudioInputStream(std::make_shared<State>());
}

void PushAudioInputStream::write(const QByteArray &pcm)
{
    const std::lock_guard lock(m_state->mutex);
    if (m_state->closed || pcm.isEmpty())
        return;
    if (const auto reader = m_state->reader)
        reader->onData(pcm);
    else
        m_state->kept.append(pcm);
}

void PushAudioInputStream::close()
{
    const std::lock_guard lock(m_state->mutex);
    if (m_state->closed)
        return;
    m_state->closed = true;
    if (const auto reader = m_state->reader)
        reader->onClosed();
}

bool PushAudioInputStream::isClosed() const
{
    const std::lock_guard lock(m_state->mutex);
    return m_state->closed;
}

void PushAudioInputStream::setReader(std::function<void(const QByteArray &)> onData, std::function<void()> onClosed)
{
    std::shared_ptr<const State::Reader> previous; // Destroyed after the lock is gone.
    const std::lock_guard lock(m_state->mutex);
    previous = std::move(m_state->reader);
    if (!onData || !onClosed)
        return;
    const auto reader = std::make_shared<const State::Reader>(State::Reader{std::move(onData), std::move(onClosed)});
    m_state->reader = reader;
    if (const QByteArray kept = std::exchange(m_state->kept, {}); !kept.isEmpty())
        reader->onData(kept);
    if (m_state->closed)
        reader->onClosed();
}

} // namespace vynlex

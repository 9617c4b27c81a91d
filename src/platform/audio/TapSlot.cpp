#include "platform/audio/TapSlot.h"

#include "platform/dispatch/FatalError.h"

namespace vynlex {

void TapSlot::install(int bufferFrames, Tap tap)
{
    const std::lock_guard lock(m_mutex);
    if (m_tap)
        fatalError(QStringLiteral("AudioEngine::installTap: bus 0 has a tap already. Remove it first."));
    if (bufferFrames <= 0 || !tap)
        fatalError(QStringLiteral("AudioEngine::installTap: a tap needs a function and at least one frame."));
    m_tap = std::make_shared<const Tap>(std::move(tap));
    m_bufferFrames = bufferFrames;
    m_remainder.clear();
}

void TapSlot::remove()
{
    std::shared_ptr<const Tap> removed; // destroyed after the lock is gone: what it owns may come back here
    const std::lock_guard lock(m_mutex);
    removed.swap(m_tap);
    m_bufferFrames = 0;
    m_remainder.clear();
}

TapSlot::Session TapSlot::open(const AudioFormat &format)
{
    const std::lock_guard lock(m_mutex);
    m_open = true;
    m_format = format;
    m_remainder.clear();
    return ++m_session;
}

void TapSlot::close()
{
    const std::lock_guard lock(m_mutex);
    m_open = false;
    m_remainder.clear();
}

void TapSlot::feed(Session session, const QByteArray &data)
{
    const std::lock_guard lock(m_mutex);
    if (!m_open || !m_tap || session != m_session)
        return;
    m_remainder += data;
    while (m_open && m_tap && session == m_session) {
        const qsizetype sizeBytes = static_cast<qsizetype>(m_bufferFrames) * m_format.bytesPerFrame();
        if (m_remainder.size() < sizeBytes)
            return;
        const PcmBuffer buffer{m_format, m_remainder.left(sizeBytes)};
        m_remainder.remove(0, sizeBytes);
        const std::shared_ptr<const Tap> tap = m_tap;
        (*tap)(buffer);
    }
}

int TapSlot::bufferFrames() const
{
    const std::lock_guard lock(m_mutex);
    return m_bufferFrames;
}

bool TapSlot::isOpen() const
{
    const std::lock_guard lock(m_mutex);
    return m_open;
}

} // namespace vynlex

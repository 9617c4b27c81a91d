#include "platform/speech/AudioBacklog.h"

#include <algorithm>

namespace vynlex {

void AudioBacklog::append(const QByteArray &pcm)
{
    m_bytes.insert(m_bytes.end(), pcm.begin(), pcm.end());
}

QByteArray AudioBacklog::read(qint64 position, qint64 maximumBytes) const
{
    const qint64 size = std::min(maximumBytes, end() - position);
    QByteArray piece(size, Qt::Uninitialized);
    const auto from = m_bytes.begin() + (position - m_begin);
    std::copy(from, from + size, piece.begin());
    return piece;
}

void AudioBacklog::letGoBefore(qint64 position)
{
    const qint64 size = std::clamp<qint64>(position - m_begin, 0, static_cast<qint64>(m_bytes.size()));
    m_bytes.erase(m_bytes.begin(), m_bytes.begin() + size);
    m_begin += size;
}

} // namespace vynlex

#pragma once

#include <QByteArray>

#include <deque>

namespace vynlex {

/// The audio of a stream that is not covered by a phrase yet. Positions are bytes from the first one ever written.
class AudioBacklog {
public:
    [[nodiscard]] qint64 begin() const { return m_begin; } ///< Everything before it has been let go.
    [[nodiscard]] qint64 end() const { return m_begin + static_cast<qint64>(m_bytes.size()); }
    [[nodiscard]] bool isEmpty() const { return m_bytes.empty(); }

    void append(const QByteArray &pcm);

    /// At most `maximumBytes` from `position`, which lies between `begin` and `end`.
    [[nodiscard]] QByteArray read(qint64 position, qint64 maximumBytes) const;

    /// Does nothing when `position` has been let go already; stops at `end`.
    void letGoBefore(qint64 position);

private:
    std::deque<char> m_bytes;
    qint64 m_begin = 0;
};

} // namespace vynlex

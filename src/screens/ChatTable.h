#pragma once

#include <QAbstractListModel>

#include <optional>
#include <vector>

#include "api/ChatRecords.h"

namespace vynlex {

/// The rows of a chat for its view, worked out from the messages when they are asked for. Main thread.
///
/// Roles: `incoming` (bool: a cell of the other person's, else of the user's own), `name` and `time` (text), `playing`
/// (bool: the play button is selected), `dimmed` (bool: pale, and takes no touches), `playImage` and `waveImage` (url),
/// `bubbleColor` (color).
class ChatTable : public QAbstractListModel {
    Q_OBJECT

public:
    /// `messages` outlive the table and may change; the table shows that from the next `reload` on.
    explicit ChatTable(const std::vector<VLChatMessage> &messages, QObject *parent = nullptr);

    /// The name above incoming messages that carry none.
    void setOtherPerson(const QString &name) { m_otherPerson = name; }

    /// Whether a reload left every row what it was.
    enum class Rows { Kept, Replaced };
    /// Shows the messages as they are now. As long as they were only added to, the view keeps its cells and its place.
    Rows reload();

    [[nodiscard]] std::optional<int> selectedIndex() const { return m_selectedIndex; }
    /// The row that is being played, or nothing.
    void setSelectedIndex(std::optional<int> row);
    [[nodiscard]] bool isDimmed(int row) const { return m_selectedIndex && m_selectedIndex != row; }

    [[nodiscard]] int rowCount(const QModelIndex &parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex &index, int role) const override;
    [[nodiscard]] QHash<int, QByteArray> roleNames() const override;

private:
    enum Role { Incoming = Qt::UserRole, Name, Time, Playing, Dimmed, PlayImage, WaveImage, BubbleColor };

    const std::vector<VLChatMessage> &m_messages;
    QString m_otherPerson;
    std::optional<int> m_selectedIndex;
    int m_shown = 0; ///< Messages that the view knows of, and the first and the last of them.
    QString m_firstId;
    QString m_lastId;
};

} // namespace vynlex

#pragma once

#include <QAbstractListModel>

#include <optional>
#include <vector>

#include "api/ChatRecords.h"

namespace vynlex {

/// The rows of a chat for its view, worked out from the messages when they are asked for. Main thread.
///
/// Roles: `incoming` (bool), `name` and `time` (text), `playing` and `dimmed` (bool), `playImage` and `waveImage`
/// (url), `bubbleColor` (color).
class ChatTable : public QAbstractListModel {
    Q_OBJECT

public:
    /// `messages` outlive the table and may change; the table shows that from the next `reload` on.
    explicit ChatTable(const std::vector<VLChatMessage> &messages, QObject *parent = nullptr);

    /// For incoming messages without a name.
    void setOtherPerson(const QString &name) { m_otherPerson = name; }

    /// Shows the messages as they are now. Messages that were only added to leave the view its place.
    void reload();

    [[nodiscard]] std::optional<int> selectedIndex() const { return m_selectedIndex; }
    /// The row that is being played: all others are dimmed. Nothing: none is.
    void setSelectedIndex(std::optional<int> row);

    [[nodiscard]] int rowCount(const QModelIndex &parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex &index, int role) const override;
    [[nodiscard]] QHash<int, QByteArray> roleNames() const override;

private:
    const std::vector<VLChatMessage> &m_messages;
    QString m_otherPerson;
    std::optional<int> m_selectedIndex;
    int m_shown = 0; ///< Messages that the view knows of.
};

} // namespace vynlex

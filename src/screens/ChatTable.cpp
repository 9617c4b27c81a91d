#include "screens/ChatTable.h"

namespace vynlex {

ChatTable::ChatTable(const std::vector<VLChatMessage> &messages, QObject *parent)
    : QAbstractListModel(parent)
    , m_messages(messages)
{
}

void ChatTable::reload()
{
    beginResetModel();
    m_shown = static_cast<int>(m_messages.size());
    endResetModel();
}

void ChatTable::setSelectedIndex(std::optional<int> row)
{
    m_selectedIndex = row;
}

int ChatTable::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : m_shown;
}

QVariant ChatTable::data(const QModelIndex &, int) const
{
    return {};
}

QHash<int, QByteArray> ChatTable::roleNames() const
{
    return {{Qt::UserRole, "incoming"},      {Qt::UserRole + 1, "name"},       {Qt::UserRole + 2, "time"},
            {Qt::UserRole + 3, "playing"},   {Qt::UserRole + 4, "dimmed"},     {Qt::UserRole + 5, "playImage"},
            {Qt::UserRole + 6, "waveImage"}, {Qt::UserRole + 7, "bubbleColor"}};
}

} // namespace vynlex

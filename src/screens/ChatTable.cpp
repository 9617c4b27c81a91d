#include "screens/ChatTable.h"

#include <QColor>
#include <QUrl>

#include "platform/ui/Color.h"
#include "platform/ui/ResourceBundle.h"
#include "screens/ClockText.h"

using namespace Qt::StringLiterals;

namespace vynlex {
namespace {

/// What a message has around it for whose it is.
struct CellLook {
    QUrl playImage;
    QUrl selectedPlayImage;
    QColor bubbleColor;
};

const CellLook &cellLook(const VLChatMessage &message)
{
    static const CellLook chatCellYours{ResourceBundle::image(u"chatSelfPlayButton"_s),
                                        ResourceBundle::image(u"chatAudioPlayButton"_s), colorFromHex(u"#9EB5FA")};
    static const CellLook chatCellOthers{ResourceBundle::image(u"playButtonForParticipant"_s),
                                         ResourceBundle::image(u"chatAudioPlayButton"_s), colorFromHex(u"#E7EBF8")};
    return message.isIncomingMessage ? chatCellOthers : chatCellYours;
}

/// The writer's name. A message that tells none is from the other person, or from "You".
QString nameAbove(const VLChatMessage &message, const QString &otherPerson)
{
    QString name = QString(message.creatorsName + u' ' + message.creatorsLName).trimmed();
    if (!name.isEmpty())
        return name;
    return message.isIncomingMessage ? otherPerson.trimmed() : u"You"_s;
}

/// Where the device is; empty when the backend's text is no moment.
QString localTime(const VLChatMessage &message)
{
    const auto moment = momentFromWire(message.createdAtString);
    return moment ? timeOfDayText(moment->toLocalTime()) : QString();
}

} // namespace

ChatTable::ChatTable(const std::vector<VLChatMessage> &messages, QObject *parent)
    : QAbstractListModel(parent)
    , m_messages(messages)
{
}

ChatTable::Rows ChatTable::reload()
{
    const int count = static_cast<int>(m_messages.size());
    // Messages come in the order of their writing, so both ends of the old rows stand for those between.
    const bool kept =
        count >= m_shown && (m_shown == 0 || (m_messages.front().id == m_firstId &&
                                              m_messages[static_cast<std::size_t>(m_shown) - 1].id == m_lastId));
    if (!kept) {
        beginResetModel();
        m_shown = count;
        endResetModel();
    } else {
        if (m_shown > 0)
            emit dataChanged(index(0), index(m_shown - 1));
        if (count > m_shown) {
            beginInsertRows({}, m_shown, count - 1);
            m_shown = count;
            endInsertRows();
        }
    }
    m_firstId = m_messages.empty() ? QString() : m_messages.front().id;
    m_lastId = m_messages.empty() ? QString() : m_messages.back().id;
    return kept ? Rows::Kept : Rows::Replaced;
}

void ChatTable::setSelectedIndex(std::optional<int> row)
{
    if (m_selectedIndex == row)
        return;
    m_selectedIndex = row;
    if (m_shown > 0)
        emit dataChanged(index(0), index(m_shown - 1), {Playing, Dimmed, PlayImage});
}

int ChatTable::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : m_shown;
}

QVariant ChatTable::data(const QModelIndex &index, int role) const
{
    // The messages may be fewer than the rows until the next reload.
    if (!index.isValid() || static_cast<std::size_t>(index.row()) >= m_messages.size())
        return {};
    const VLChatMessage &message = m_messages[static_cast<std::size_t>(index.row())];
    const bool playing = m_selectedIndex == index.row();
    switch (role) {
    case Incoming:
        return message.isIncomingMessage;
    case Name:
        return nameAbove(message, m_otherPerson);
    case Time:
        return localTime(message);
    case Playing:
        return playing;
    case Dimmed:
        return isDimmed(index.row());
    case PlayImage:
        return playing ? cellLook(message).selectedPlayImage : cellLook(message).playImage;
    case WaveImage: {
        static const QUrl audioWave = ResourceBundle::image(u"audioWave"_s);
        return audioWave;
    }
    case BubbleColor:
        return cellLook(message).bubbleColor;
    default:
        return {};
    }
}

QHash<int, QByteArray> ChatTable::roleNames() const
{
    return {{Incoming, "incoming"}, {Name, "name"},           {Time, "time"},           {Playing, "playing"},
            {Dimmed, "dimmed"},     {PlayImage, "playImage"}, {WaveImage, "waveImage"}, {BubbleColor, "bubbleColor"}};
}

} // namespace vynlex

#include "screens/UserTable.h"

#include <QUrl>

#include "platform/ui/ResourceBundle.h"

using namespace Qt::StringLiterals;

namespace vynlex {

void UserTable::reload(std::shared_ptr<const UserList> users, std::optional<std::vector<int>> found)
{
    beginResetModel();
    m_users = std::move(users);
    m_found = std::move(found);
    m_initials.clear();
    endResetModel();
}

const User *UserTable::userAt(int row) const
{
    if (row < 0 || row >= rowCount())
        return nullptr;
    return &m_users->at(m_found ? (*m_found)[static_cast<std::size_t>(row)] : row);
}

int UserTable::rowCount(const QModelIndex &parent) const
{
    if (parent.isValid())
        return 0;
    return m_found ? static_cast<int>(m_found->size()) : m_users->count();
}

QVariant UserTable::data(const QModelIndex &index, int role) const
{
    static const QUrl callImage = ResourceBundle::image(u"call_home"_s);
    static const QUrl voiceImage = ResourceBundle::image(u"voice_home"_s);

    const User *const user = userAt(index.row());
    if (!user)
        return {};
    switch (role) {
    case Name:
        return user->name;
    case PhoneNumber:
        return user->phoneNumber;
    case PhoneNumberHidden:
        return user->phoneNumber.isEmpty();
    case Initials:
        return initialsOf(index.row()).text;
    case InitialsColor:
        return initialsOf(index.row()).background;
    case CallImage:
        return callImage;
    case VoiceImage:
        return voiceImage;
    default:
        return {};
    }
}

QHash<int, QByteArray> UserTable::roleNames() const
{
    return {{Name, "name"},
            {PhoneNumber, "phoneNumber"},
            {PhoneNumberHidden, "phoneNumberHidden"},
            {Initials, "initials"},
            {InitialsColor, "initialsColor"},
            {CallImage, "callImage"},
            {VoiceImage, "voiceImage"}};
}

const InitialsImage &UserTable::initialsOf(int row) const
{
    const auto known = m_initials.find(row);
    if (known != m_initials.end())
        return known->second;
    return m_initials.emplace(row, initialsImage(userAt(row)->name)).first->second;
}

} // namespace vynlex

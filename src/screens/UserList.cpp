#include "screens/UserList.h"

namespace vynlex {
namespace {

QString folded(const QString &text)
{
    return text.normalized(QString::NormalizationForm_C).toLower();
}

} // namespace

UserList::UserList(std::vector<User> users)
    : m_users(std::move(users))
{
    m_searchedNames.reserve(m_users.size());
    for (const User &user : m_users)
        m_searchedNames.push_back(folded(user.name));
}

std::vector<int> UserList::placesOfNamesWith(const QString &text) const
{
    const QString wanted = folded(text);
    std::vector<int> places;
    for (int place = 0; place < count(); ++place) {
        if (m_searchedNames[static_cast<std::size_t>(place)].contains(wanted))
            places.push_back(place);
    }
    return places;
}

} // namespace vynlex

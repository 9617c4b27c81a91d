#include "screens/UserList.h"

#include <QStringMatcher>

#include <numeric>

namespace vynlex {
namespace {

QString asSearched(const QString &text)
{
    return text.normalized(QString::NormalizationForm_C).toLower();
}

} // namespace

UserList::UserList(std::vector<User> users)
    : m_users(std::move(users))
{
    m_ends.reserve(m_users.size());
    for (const User &user : m_users) {
        m_names += asSearched(user.name);
        m_ends.push_back(m_names.size());
    }
}

std::vector<int> UserList::placesOfNamesWith(const QString &text) const
{
    std::vector<int> places;
    const QStringMatcher matcher(asSearched(text));
    if (matcher.pattern().isEmpty()) {
        places.resize(m_users.size());
        std::iota(places.begin(), places.end(), 0);
        return places;
    }
    std::size_t place = 0;
    qsizetype found = matcher.indexIn(m_names);
    while (found >= 0) {
        while (m_ends[place] <= found)
            ++place;
        if (found + matcher.pattern().size() > m_ends[place]) {
            found = matcher.indexIn(m_names, found + 1); // It begins in one name and ends in another.
            continue;
        }
        places.push_back(static_cast<int>(place));
        found = matcher.indexIn(m_names, m_ends[place]);
    }
    return places;
}

} // namespace vynlex

#pragma once

#include <QString>

#include <vector>

#include "api/DirectoryRecords.h"

namespace vynlex {

/// People in the order of a table, ready to be searched. It does not change, so it can be shared.
class UserList {
public:
    UserList() = default;
    explicit UserList(std::vector<User> users);

    [[nodiscard]] int count() const { return static_cast<int>(m_users.size()); }
    [[nodiscard]] const User &at(int place) const { return m_users[static_cast<std::size_t>(place)]; }

    /// The places, in order, of those whose `name` has `text` in it. Blanks count, letter case does not, nor how a
    /// letter is put together of code points.
    [[nodiscard]] std::vector<int> placesOfNamesWith(const QString &text) const;

private:
    std::vector<User> m_users;
    std::vector<QString> m_searchedNames; ///< Folded once, since each letter that is typed searches all of them.
};

} // namespace vynlex

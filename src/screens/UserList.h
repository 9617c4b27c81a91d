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

    /// The places, in order, of those whose `name` has `text` in it. Letter case does not count, blanks do; nor does it
    /// count in which code points a letter is written. An empty text is in every name.
    [[nodiscard]] std::vector<int> placesOfNamesWith(const QString &text) const;

private:
    std::vector<User> m_users;
    /// All names as they are searched, one directly behind the other, and where each ends: one walk through one text
    /// finds what a walk through the names would, in a fraction of the time.
    QString m_names;
    std::vector<qsizetype> m_ends;
};

} // namespace vynlex

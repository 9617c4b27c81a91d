#include "sandbox/backend/Directory.h"

#include <utility>

#include "sandbox/backend/PhoneNumber.h"

namespace sandbox {

namespace {

/// The columns of a user, in the order in which `userAt` reads them.
std::string userColumns(const std::string &table)
{
    std::string columns;
    for (const char *name : {"id", "name", "lname", "phoneNo", "emailId", "roleIds", "hasPicture", "isWaiting"})
        columns += (columns.empty() ? "" : ", ") + table + "." + name;
    return columns;
}
constexpr int userColumnCount = 8;

BackendUser userAt(const Statement &row, int column)
{
    return {row.text(column),     row.text(column + 1), row.text(column + 2), row.text(column + 3),
            row.text(column + 4), row.text(column + 5), row.flag(column + 6), row.flag(column + 7)};
}

} // namespace

Directory::Directory(Database &database)
    : m_database(database)
{
}

void Directory::addUser(const BackendUser &user, std::string_view webToken)
{
    m_database.prepare("INSERT INTO users VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?)")
        .with(user.id, webToken, user.name, user.lname, user.phoneNo, phoneKey(user.phoneNo), user.emailId,
              user.roleIds, user.hasPicture, user.isWaiting)
        .run();
}

std::optional<BackendUser> Directory::user(std::string_view id)
{
    auto query = m_database.prepare("SELECT " + userColumns("users") + " FROM users WHERE id = ?");
    if (!query.with(id).step())
        return std::nullopt;
    return userAt(query, 0);
}

std::optional<BackendUser> Directory::userOfWebToken(std::string_view webToken)
{
    auto query = m_database.prepare("SELECT " + userColumns("users") + " FROM users WHERE webToken = ?");
    if (!query.with(webToken).step())
        return std::nullopt;
    return userAt(query, 0);
}

void Directory::addKnownNumbers(std::string_view userId, const std::vector<KnownNumber> &numbers)
{
    Transaction transaction(m_database);
    auto insert = m_database.prepare("INSERT OR IGNORE INTO knownNumbers VALUES (?, ?, ?, ?)");
    for (const auto &number : numbers)
        insert.with(userId, number.name, number.digits, phoneKey(number.digits)).run();
    transaction.commit();
}

Page<BackendUser> Directory::contacts(std::string_view userId, std::string_view search, PageRange range)
{
    // instr, not LIKE: in a search, a percent sign is a percent sign.
    const std::string where = R"sql(
        FROM users WHERE users.id <> ?1 AND users.phoneKey <> ''
        AND EXISTS (SELECT 1 FROM knownNumbers AS known WHERE known.userId = ?1 AND known.phoneKey = users.phoneKey)
        AND instr(lower(users.name || ' ' || users.lname), lower(?2)) > 0)sql";
    Page<BackendUser> page;
    auto count = m_database.prepare("SELECT count(*)" + where);
    count.with(userId, search).step();
    page.total = count.integer(0);

    auto query = m_database.prepare("SELECT " + userColumns("users") + where +
                                    " ORDER BY lower(users.name), lower(users.lname), users.id LIMIT ?3 OFFSET ?4");
    query.with(userId, search, range.limit, range.offset);
    while (query.step())
        page.records.push_back(userAt(query, 0));
    return page;
}

void Directory::addCall(const CallRecord &call)
{
    m_database.prepare("INSERT INTO calls VALUES (?, ?, ?, ?, ?, ?)")
        .with(call.id, call.category, call.owner.id, call.title, call.startedAt, call.endedAt)
        .run();
    auto insert = m_database.prepare("INSERT INTO callMembers VALUES (?, ?, ?, ?)");
    int place = 0;
    for (const auto &member : call.members)
        insert.with(call.id, ++place, member.user.id, member.missed).run();
}

Page<CallRecord> Directory::calls(std::string_view userId, CallFilter filter, PageRange range)
{
    const std::string where = R"sql(
        FROM calls JOIN users AS owner ON owner.id = calls.ownerId
        LEFT JOIN callMembers AS mine ON mine.callId = calls.id AND mine.userId = ?1
        WHERE (calls.ownerId = ?1 OR mine.userId IS NOT NULL)
        AND ((?2 AND calls.category = 'one_to_one_call') OR (?3 AND calls.category = 'group_call')
             OR (?4 AND mine.missed)))sql";
    Page<CallRecord> page;
    auto count = m_database.prepare("SELECT count(*)" + where);
    count.with(userId, filter.oneToOne, filter.group, filter.missed).step();
    page.total = count.integer(0);

    auto query = m_database.prepare("SELECT " + userColumns("owner") +
                                    ", calls.id, calls.category, calls.title, calls.startedAt, calls.endedAt" + where +
                                    " ORDER BY calls.startedAt DESC, calls.id LIMIT ?5 OFFSET ?6");
    auto members = m_database.prepare("SELECT " + userColumns("users") +
                                      ", callMembers.missed FROM callMembers JOIN users ON users.id = "
                                      "callMembers.userId WHERE callMembers.callId = ? ORDER BY callMembers.place");
    query.with(userId, filter.oneToOne, filter.group, filter.missed, range.limit, range.offset);
    while (query.step()) {
        CallRecord call;
        call.owner = userAt(query, 0);
        call.id = query.text(userColumnCount);
        call.category = query.text(userColumnCount + 1);
        call.title = query.text(userColumnCount + 2);
        call.startedAt = query.instant(userColumnCount + 3);
        call.endedAt = query.instant(userColumnCount + 4);
        members.with(call.id);
        while (members.step())
            call.members.push_back({userAt(members, 0), members.flag(userColumnCount)});
        page.records.push_back(std::move(call));
    }
    return page;
}

} // namespace sandbox

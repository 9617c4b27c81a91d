#include "sandbox/backend/Conversations.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace sandbox {

bool ThreadRecord::hasMember(std::string_view userId) const
{
    return std::any_of(members.begin(), members.end(), [&](const Member &member) { return member.id == userId; });
}

Conversations::Conversations(Database &database)
    : m_database(database)
{
}

std::optional<ThreadRecord> Conversations::thread(std::string_view id)
{
    auto query = m_database.prepare(R"sql(
        SELECT threads.id, context, creatorId, createdAt, lesser.id, lesser.name, lesser.lname, greater.id, greater.name,
            greater.lname,
            max(createdAt, ifnull((SELECT max(createdAt) FROM messages WHERE threadId = threads.id), 0)),
            (SELECT total(attachmentCount) FROM messages WHERE threadId = threads.id)
        FROM threads JOIN users AS lesser ON lesser.id = lesserId JOIN users AS greater ON greater.id = greaterId
        WHERE threads.id = ?)sql");
    if (!query.with(id).step())
        return std::nullopt;
    ThreadRecord thread;
    thread.id = query.text(0);
    thread.context = query.text(1);
    thread.creatorId = query.text(2);
    thread.createdAt = query.instant(3);
    thread.members = {{query.text(4), query.text(5), query.text(6)}, {query.text(7), query.text(8), query.text(9)}};
    thread.modifiedAt = query.instant(10);
    thread.attachmentCount = query.integer(11);
    return thread;
}

ThreadRecord Conversations::privateThread(const NewThread &thread)
{
    const auto &[lesser, greater] = std::minmax(thread.first, thread.second);
    m_database.prepare("INSERT INTO threads VALUES (?, ?, ?, ?, ?, ?) ON CONFLICT (lesserId, greaterId) DO NOTHING")
        .with(thread.id, lesser, greater, thread.context, thread.creatorId, thread.createdAt)
        .run();
    auto query = m_database.prepare("SELECT id FROM threads WHERE lesserId = ? AND greaterId = ?");
    if (!query.with(lesser, greater).step())
        throw std::runtime_error("a thread that was just made is not there");
    return this->thread(query.text(0)).value();
}

MessageRecord Conversations::send(const MessageRecord &message)
{
    Transaction transaction(m_database);
    add(message);
    transaction.commit();

    MessageRecord stored = message;
    auto names = m_database.prepare("SELECT name, lname FROM users WHERE id = ?");
    names.with(message.creatorId).step();
    stored.creatorsName = names.text(0);
    stored.creatorsLName = names.text(1);
    return stored;
}

void Conversations::add(const MessageRecord &message)
{
    m_database
        .prepare("INSERT INTO messages (id, threadId, type, creatorId, createdAt, component, attachmentCount) "
                 "VALUES (?, ?, ?, ?, ?, ?, ?)")
        .with(message.id, message.threadId, message.isSystem ? "system" : "message", message.creatorId,
              message.createdAt, message.component, message.attachmentCount)
        .run();
    auto insert = m_database.prepare("INSERT INTO recipients VALUES (last_insert_rowid(), ?, ?)");
    for (const auto &recipient : message.recipients)
        insert.with(recipient.userId, recipient.isUnread).run();
}

MessagePage Conversations::messages(std::string_view threadId, std::string_view userId, PageRange range)
{
    MessagePage page;
    auto counts = m_database.prepare(R"sql(
        SELECT count(*), count(CASE WHEN isUnread THEN 1 END)
        FROM messages LEFT JOIN recipients ON messagePlace = place AND userId = ?2 WHERE threadId = ?1)sql");
    counts.with(threadId, userId).step();
    page.total = counts.integer(0);
    page.unread = counts.integer(1);

    auto query = m_database.prepare(R"sql(
        SELECT place, messages.id, type, creatorId, name, lname, createdAt, component, attachmentCount
        FROM messages JOIN users ON users.id = creatorId
        WHERE threadId = ? ORDER BY place DESC LIMIT ? OFFSET ?)sql");
    auto recipients = m_database.prepare("SELECT userId, isUnread FROM recipients WHERE messagePlace = ?");
    query.with(threadId, range.limit, range.offset);
    while (query.step()) {
        MessageRecord message;
        message.id = query.text(1);
        message.threadId = threadId;
        message.isSystem = query.text(2) == "system";
        message.creatorId = query.text(3);
        message.creatorsName = query.text(4);
        message.creatorsLName = query.text(5);
        message.createdAt = query.instant(6);
        message.component = query.text(7);
        message.attachmentCount = query.integer(8);
        recipients.with(query.integer(0));
        while (recipients.step())
            message.recipients.push_back({recipients.text(0), recipients.flag(1)});
        page.records.push_back(std::move(message));
    }
    return page;
}

std::vector<MessageRecord> Conversations::markRead(const std::vector<MessageRecord> &messages, std::string_view userId)
{
    std::vector<MessageRecord> changed;
    for (const auto &message : messages) {
        for (std::size_t i = 0; i < message.recipients.size(); ++i) {
            if (message.recipients[i].userId == userId && message.recipients[i].isUnread) {
                changed.push_back(message);
                changed.back().recipients[i].isUnread = false;
            }
        }
    }
    if (changed.empty())
        return changed;
    Transaction transaction(m_database);
    auto update = m_database.prepare("UPDATE recipients SET isUnread = 0 WHERE userId = ? AND messagePlace = (SELECT "
                                     "place FROM messages WHERE id = ?)");
    for (const auto &message : changed)
        update.with(userId, message.id).run();
    transaction.commit();
    return changed;
}

} // namespace sandbox

#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "sandbox/backend/Database.h"
#include "sandbox/backend/Directory.h"
#include "sandbox/backend/WireTime.h"

namespace sandbox {

struct ThreadRecord {
    struct Member {
        std::string id;
        std::string name;
        std::string lname;
    };
    std::string id;
    std::vector<Member> members; ///< two
    std::string context;
    std::string creatorId;
    Instant createdAt;
    Instant modifiedAt; ///< when the newest message came
    std::int64_t attachmentCount = 0;

    [[nodiscard]] bool hasMember(std::string_view userId) const;
};

struct MessageRecord {
    struct Recipient {
        std::string userId;
        bool isUnread = true;
    };
    std::string id;
    std::string threadId;
    bool isSystem = false;
    std::string creatorId;
    std::string creatorsName;  ///< the user's, not stored with the message
    std::string creatorsLName; ///< the same
    Instant createdAt;
    std::string component; ///< JSON object: what is answered as "messageComponent" or "systemComponent"
    std::int64_t attachmentCount = 0;
    std::vector<Recipient> recipients; ///< the members without the creator
};

struct MessagePage : Page<MessageRecord> {
    std::int64_t unread = 0; ///< in the whole thread, by who asks
};

/// Private threads and their messages. What an operation has returned is on disk.
class Conversations {
public:
    explicit Conversations(Database &database);

    [[nodiscard]] std::optional<ThreadRecord> thread(std::string_view id);

    struct NewThread {
        std::string id;
        std::string first; ///< the two members, different ones, in any order
        std::string second;
        std::string context;
        std::string creatorId;
        Instant createdAt;
    };
    /// The thread of the two; `thread` becomes it when they have none yet.
    ThreadRecord privateThread(const NewThread &thread);

    /// Adds a message at the end. The creator's names come from the directory.
    MessageRecord send(const MessageRecord &message);
    /// The same within a transaction of the caller.
    void add(const MessageRecord &message);

    /// Newest first.
    [[nodiscard]] MessagePage messages(std::string_view threadId, std::string_view userId, PageRange range);

    /// Those of `messages` that the user had not read, as they are now that the user has.
    std::vector<MessageRecord> markRead(const std::vector<MessageRecord> &messages, std::string_view userId);

private:
    Database &m_database;
};

} // namespace sandbox

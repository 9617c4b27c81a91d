#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "sandbox/backend/Database.h"
#include "sandbox/backend/WireTime.h"

namespace sandbox {

struct BackendUser {
    std::string id;
    std::string name;
    std::string lname;
    std::string phoneNo;
    std::string emailId;
    std::string roleIds = "[]"; ///< JSON
    bool hasPicture = false;
    bool isWaiting = false; ///< for admission
};

/// An entry of a device's address book, as it was uploaded.
struct KnownNumber {
    std::string name;
    std::string digits;
};

struct CallRecord {
    struct Member {
        BackendUser user;
        bool missed = false;
    };
    std::string id;
    std::string category; ///< "one_to_one_call" or "group_call"
    BackendUser owner;
    std::string title;
    Instant startedAt;
    Instant endedAt;
    std::vector<Member> members; ///< without the owner
};

struct PageRange {
    int offset = 0;
    int limit = 0;
};

template<class Record> struct Page {
    std::vector<Record> records;
    std::int64_t total = 0; ///< on all pages

    [[nodiscard]] bool moreAfter(PageRange range) const
    {
        return range.offset + static_cast<std::int64_t>(records.size()) < total;
    }
};

/// Who uses the service, whom they know, and what calls there were.
class Directory {
public:
    explicit Directory(Database &database);

    /// The web token is what the application that embeds the kit signs a user in with.
    void addUser(const BackendUser &user, std::string_view webToken);
    [[nodiscard]] std::optional<BackendUser> user(std::string_view id);
    [[nodiscard]] std::optional<BackendUser> userOfWebToken(std::string_view webToken);

    /// Those that are known already, by name and digits, stay as they are.
    void addKnownNumbers(std::string_view userId, const std::vector<KnownNumber> &numbers);
    /// The other users whose number that user knows, by name. `search` is part of the full name, Latin letters in
    /// either case; empty is everybody.
    [[nodiscard]] Page<BackendUser> contacts(std::string_view userId, std::string_view search, PageRange range);

    struct CallFilter {
        bool oneToOne = false;
        bool group = false;
        bool missed = false; ///< calls of either kind that the user missed
    };
    void addCall(const CallRecord &call);
    /// Calls of that user, as owner or member, newest first.
    [[nodiscard]] Page<CallRecord> calls(std::string_view userId, CallFilter filter, PageRange range);

private:
    Database &m_database;
};

} // namespace sandbox

#include "sandbox/backend/Schema.h"

#include <stdexcept>
#include <string>

namespace sandbox {

namespace {

// Times are milliseconds since 1970. A change of the tables is a new version.
constexpr int version = 1;

constexpr const char *tables = R"sql(
CREATE TABLE users (
    id TEXT PRIMARY KEY,
    webToken TEXT NOT NULL UNIQUE,
    name TEXT NOT NULL,
    lname TEXT NOT NULL,
    phoneNo TEXT NOT NULL,
    phoneKey TEXT NOT NULL,
    emailId TEXT NOT NULL,
    roleIds TEXT NOT NULL, -- JSON
    hasPicture INTEGER NOT NULL,
    isWaiting INTEGER NOT NULL
);
CREATE INDEX usersByPhone ON users (phoneKey);

CREATE TABLE knownNumbers ( -- what a user's address book holds
    userId TEXT NOT NULL REFERENCES users,
    name TEXT NOT NULL,
    digits TEXT NOT NULL,
    phoneKey TEXT NOT NULL,
    PRIMARY KEY (userId, name, digits)
) WITHOUT ROWID;
CREATE INDEX knownNumbersByPhone ON knownNumbers (userId, phoneKey);

CREATE TABLE calls (
    id TEXT PRIMARY KEY,
    category TEXT NOT NULL,
    ownerId TEXT NOT NULL REFERENCES users,
    title TEXT NOT NULL,
    startedAt INTEGER NOT NULL,
    endedAt INTEGER NOT NULL
);
CREATE INDEX callsByStart ON calls (startedAt);
CREATE TABLE callMembers (
    callId TEXT NOT NULL REFERENCES calls,
    place INTEGER NOT NULL,
    userId TEXT NOT NULL REFERENCES users,
    missed INTEGER NOT NULL,
    PRIMARY KEY (callId, userId)
) WITHOUT ROWID;

CREATE TABLE threads ( -- of two; the lesser id first, so that a pair has one
    id TEXT PRIMARY KEY,
    lesserId TEXT NOT NULL REFERENCES users,
    greaterId TEXT NOT NULL REFERENCES users,
    context TEXT NOT NULL,
    creatorId TEXT NOT NULL REFERENCES users,
    createdAt INTEGER NOT NULL,
    UNIQUE (lesserId, greaterId),
    CHECK (lesserId < greaterId)
);
CREATE TABLE messages (
    place INTEGER PRIMARY KEY AUTOINCREMENT, -- the order of a thread's messages
    id TEXT NOT NULL UNIQUE,
    threadId TEXT NOT NULL REFERENCES threads,
    type TEXT NOT NULL,
    creatorId TEXT NOT NULL REFERENCES users,
    createdAt INTEGER NOT NULL,
    component TEXT NOT NULL, -- JSON, as it is answered
    attachmentCount INTEGER NOT NULL
);
CREATE INDEX messagesByThread ON messages (threadId, place);
CREATE TABLE recipients (
    messagePlace INTEGER NOT NULL REFERENCES messages,
    userId TEXT NOT NULL REFERENCES users,
    isUnread INTEGER NOT NULL,
    PRIMARY KEY (messagePlace, userId)
) WITHOUT ROWID;
)sql";

} // namespace

bool makeSchema(Database &database)
{
    auto query = database.prepare("PRAGMA user_version");
    query.step();
    const auto found = query.integer(0);
    query.run();
    if (found == version)
        return false;
    if (found != 0)
        throw std::runtime_error("the database is of version " + std::to_string(found) + ", this program knows " +
                                 std::to_string(version) + ": name another folder with --data");
    database.execute(tables);
    database.execute("PRAGMA user_version = " + std::to_string(version));
    return true;
}

} // namespace sandbox

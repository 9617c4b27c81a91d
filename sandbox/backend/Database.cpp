#include "sandbox/backend/Database.h"

#include <sqlite3.h>

#include <iostream>
#include <stdexcept>

namespace sandbox {

namespace {

constexpr int busyLimitMs = 5000; // another process with the same data folder

[[noreturn]] void fail(sqlite3 *database)
{
    throw std::runtime_error(std::string("the database failed: ") +
                             (database ? sqlite3_errmsg(database) : "out of memory"));
}

sqlite3 *opened(const std::filesystem::path &file)
{
    sqlite3 *database = nullptr;
    const std::string name = file.empty() ? ":memory:" : file.string();
    if (sqlite3_open_v2(name.c_str(), &database, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE, nullptr) != SQLITE_OK) {
        const std::string reason = database ? sqlite3_errmsg(database) : "out of memory";
        sqlite3_close(database);
        throw std::runtime_error(name + ": " + reason);
    }
    return database;
}

} // namespace

Statement::Statement(sqlite3 *database, std::string_view sql)
    : m_database(database)
    , m_statement(nullptr, sqlite3_finalize)
{
    sqlite3_stmt *statement = nullptr;
    if (sqlite3_prepare_v2(database, sql.data(), static_cast<int>(sql.size()), &statement, nullptr) != SQLITE_OK)
        fail(database);
    m_statement.reset(statement);
}

bool Statement::step()
{
    switch (sqlite3_step(m_statement.get())) {
    case SQLITE_ROW:
        return true;
    case SQLITE_DONE:
        return false;
    default:
        fail(m_database);
    }
}

void Statement::run()
{
    while (step())
        continue;
    reset();
}

std::string Statement::text(int column) const
{
    const auto *text = reinterpret_cast<const char *>(sqlite3_column_text(m_statement.get(), column));
    return text ? std::string(text, static_cast<std::size_t>(sqlite3_column_bytes(m_statement.get(), column))) : "";
}

std::int64_t Statement::integer(int column) const
{
    return sqlite3_column_int64(m_statement.get(), column);
}

void Statement::reset()
{
    sqlite3_reset(m_statement.get()); // its result is that of the step before
}

void Statement::bind(int place, std::string_view text)
{
    const char *bytes = text.empty() ? "" : text.data(); // nullptr would be NULL
    if (sqlite3_bind_text64(m_statement.get(), place, bytes, text.size(), SQLITE_TRANSIENT, SQLITE_UTF8) != SQLITE_OK)
        fail(m_database);
}

void Statement::bind(int place, std::int64_t number)
{
    if (sqlite3_bind_int64(m_statement.get(), place, number) != SQLITE_OK)
        fail(m_database);
}

Database::Database(const std::filesystem::path &file)
    : m_database(opened(file), sqlite3_close)
{
    sqlite3_busy_timeout(m_database.get(), busyLimitMs);
    execute("PRAGMA journal_mode = WAL; PRAGMA synchronous = FULL; PRAGMA foreign_keys = ON;");
}

void Database::execute(const std::string &sql)
{
    if (sqlite3_exec(m_database.get(), sql.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK)
        fail(m_database.get());
}

Transaction::Transaction(Database &database)
    : m_database(database)
{
    // At once for writing: a reader that becomes a writer may be refused for a state that has changed meanwhile.
    m_database.execute("BEGIN IMMEDIATE");
}

Transaction::~Transaction()
{
    if (!m_open)
        return;
    try {
        m_database.execute("ROLLBACK");
    } catch (const std::exception &error) { // some failures have undone everything themselves
        std::cerr << "confera-sandbox: " << error.what() << std::endl;
    }
}

void Transaction::commit()
{
    m_database.execute("COMMIT");
    m_open = false;
}

} // namespace sandbox

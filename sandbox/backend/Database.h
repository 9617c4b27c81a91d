#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>

#include "sandbox/backend/WireTime.h"

struct sqlite3;
struct sqlite3_stmt;

namespace sandbox {

/// One SQL statement with its values. Failures are thrown as std::runtime_error. It must not outlive its database.
class Statement {
public:
    /// Begins anew with these values for the parameters, in their order: texts, integers, flags and moments (in
    /// milliseconds).
    template<class... Values> Statement &with(const Values &...values)
    {
        reset();
        int place = 0;
        (bind(++place, values), ...);
        return *this;
    }

    /// Runs to the next row; false at the end.
    bool step();
    /// Runs to the end and is ready for the next values.
    void run();

    /// Of the current row. Columns count from 0; NULL is empty, or 0.
    [[nodiscard]] std::string text(int column) const;
    [[nodiscard]] std::int64_t integer(int column) const;
    [[nodiscard]] bool flag(int column) const { return integer(column) != 0; }
    [[nodiscard]] Instant instant(int column) const { return Instant(std::chrono::milliseconds(integer(column))); }

private:
    friend class Database;
    Statement(sqlite3 *database, std::string_view sql);
    void reset();
    void bind(int place, std::string_view text);
    void bind(int place, std::int64_t number);
    void bind(int place, int number) { bind(place, std::int64_t{number}); }
    void bind(int place, bool flag) { bind(place, std::int64_t{flag}); }
    void bind(int place, Instant instant) { bind(place, std::int64_t{instant.time_since_epoch().count()}); }
    void bind(int place, const std::string &text) { bind(place, std::string_view(text)); }
    void bind(int place, const char *text) { bind(place, std::string_view(text)); }

    sqlite3 *m_database;
    std::unique_ptr<sqlite3_stmt, int (*)(sqlite3_stmt *)> m_statement;
};

/// An SQLite database. A transaction that was committed survives the end of the process and of the machine (write-ahead
/// log, synchronised at every commit). One thread at a time. Failures are thrown as std::runtime_error.
class Database {
public:
    /// Made when it is not there; an empty path is a database in memory.
    explicit Database(const std::filesystem::path &file);

    [[nodiscard]] Statement prepare(std::string_view sql) { return {m_database.get(), sql}; }
    /// Statements without values, separated by semicolons.
    void execute(const std::string &sql);

private:
    std::unique_ptr<sqlite3, int (*)(sqlite3 *)> m_database;
};

/// All or nothing: what was not committed when it ends is undone.
class Transaction {
public:
    explicit Transaction(Database &database);
    ~Transaction();
    Transaction(const Transaction &) = delete;
    Transaction &operator=(const Transaction &) = delete;

    void commit();

private:
    Database &m_database;
    bool m_open = true;
};

} // namespace sandbox

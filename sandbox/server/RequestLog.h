#pragma once

#include <boost/json/array.hpp>
#include <boost/json/object.hpp>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <map>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "sandbox/server/Router.h"

namespace sandbox {

/// What has been asked of the server, without keys, tokens or bodies. Any thread.
class RequestLog {
public:
    struct Entry {
        std::chrono::system_clock::time_point time = std::chrono::system_clock::now();
        std::string method;
        std::string host;
        std::string target;          ///< secrets in the query are masked
        boost::json::object headers; ///< values of secret headers are masked
        unsigned status = 0;         ///< 0: ended without an answer
        bool webSocket = false;
        bool throughProxy = false;
        std::uint64_t bytesReceived = 0;    ///< body, or all WebSocket messages
        std::uint64_t messagesReceived = 0; ///< WebSocket
        std::uint64_t messagesSent = 0;     ///< WebSocket
        std::vector<std::string> faults;
    };

    static Entry entryFor(const HttpRequest &request, std::string_view host, bool throughProxy);

    void add(Entry entry);

    /// A fault of a client's that no answer tells it: `where` it was ("host/path session 3") and what was wrong.
    void addProblem(std::string_view where, std::string_view what);

    /// The last `capacity` requests, oldest first.
    [[nodiscard]] boost::json::array recent() const;
    /// The last `capacity` problems, oldest first.
    [[nodiscard]] boost::json::array problems() const;

    /// Counts since the start, by "METHOD host path": requests, answers by status, bytes and messages.
    [[nodiscard]] boost::json::object totals() const;

    static constexpr std::size_t capacity = 500;

private:
    struct Total {
        std::uint64_t requests = 0;
        std::uint64_t bytesReceived = 0;
        std::uint64_t messagesReceived = 0;
        std::uint64_t messagesSent = 0;
        std::map<unsigned, std::uint64_t> byStatus;
    };
    struct Problem {
        std::chrono::system_clock::time_point time = std::chrono::system_clock::now();
        std::string where;
        std::string what;
    };

    mutable std::mutex m_mutex;
    std::deque<Entry> m_recent;
    std::map<std::string, Total> m_totals;
    std::deque<Problem> m_problems;
};

} // namespace sandbox

#pragma once

#include <boost/json/array.hpp>
#include <boost/json/object.hpp>
#include <boost/json/value.hpp>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <map>
#include <mutex>
#include <optional>
#include <random>
#include <string>
#include <string_view>
#include <vector>

namespace sandbox {

/// What is to go wrong with one request, or with the WebSocket that it opens.
struct RouteFaults {
    struct Status {
        unsigned code = 500;
        std::string body;
    };
    /// Both absent: in place of any answer. On a WebSocket `afterMessages` counts what the server has sent.
    struct Reset {
        std::optional<std::size_t> afterBytes;
        std::optional<std::size_t> afterMessages;
    };
    struct Silence {
        std::optional<std::size_t> afterMessages; ///< absent: not even the answer to the request
    };
    struct Close {
        std::uint16_t code = 1011;
        std::string reason;
        std::size_t afterMessages = 0;
    };
    struct Truncate {
        std::optional<std::size_t> bytes; ///< of the body; absent: half of it
    };

    std::chrono::milliseconds latency{0};
    std::optional<Status> status;
    std::optional<Truncate> truncate;
    std::optional<std::size_t> bytesPerSecond;
    std::optional<Reset> reset;
    std::optional<Silence> silence;
    std::optional<Close> close;
    bool emptyBody = false;
    bool garbledBody = false;
    bool dropPongs = false;

    std::vector<std::string> kinds; ///< of all the above that apply, for the log
};

/// The faults that are switched on. Any thread.
///
/// A fault stands for a route (a host and a path pattern) or for a named point inside a service ("recognition.turn")
/// that the service asks about. It goes off each time it is met, or as often as "times" says.
class FaultBoard {
public:
    /// Makes a point known, and the kinds of fault that its service can play. A fault for an unknown point is refused,
    /// so that a misspelling does not pass for a test.
    void declarePoint(std::string point, std::vector<std::string> kinds);

    /// Faults as the control port takes them: all are added, or none. Route faults:
    ///
    ///     {"host": "*.stt.speech.microsoft.com", "path": "/speech/*", "kind": "latency", "ms": 300, "jitterMs": 100,
    ///      "times": 2}
    ///
    /// "host" and "path" default to "*", "times" to for ever. Kinds and their parameters:
    ///
    /// | kind        | parameters                                                                                |
    /// |-------------|-------------------------------------------------------------------------------------------|
    /// | latency     | ms, jitterMs (0): waits ms +- jitterMs before the answer or the upgrade                    |
    /// | status      | status (100 to 599), body (""): this instead of the answer or the upgrade                  |
    /// | emptyBody   | the answer (each WebSocket message) without its body                                       |
    /// | garbledBody | the second half of the body (of each WebSocket message) is noise                           |
    /// | truncate    | bytes (half): the connection ends after so many bytes of the body (of a WebSocket message) |
    /// | slow        | bytesPerSecond: no more than that leaves the server, TLS included; twice that at the start |
    /// | reset       | afterBytes or afterMessages; neither: TCP reset instead of an answer                       |
    /// | silence     | afterMessages; not given: never answers                                                    |
    /// | close       | code (1000 to 4999), reason (""), afterMessages (0): the WebSocket closes                  |
    /// | dropPongs   | pings stay unanswered                                                                      |
    ///
    /// Faults for a point: {"point": "recognition.turn", "kind": "drop", "times": 1}; other members are handed to the
    /// service as they are. Throws std::invalid_argument with what is wrong.
    void add(const boost::json::array &faults);

    void clear();
    [[nodiscard]] boost::json::array list() const;

    /// Everything that applies to a request now; of each kind the fault added first.
    [[nodiscard]] RouteFaults takeForRoute(std::string_view host, std::string_view path);

    struct PointFault {
        std::string kind;
        boost::json::object parameters;
    };
    /// The fault added first for `point`, if any. Throws std::logic_error for a point that nobody declared.
    [[nodiscard]] std::optional<PointFault> take(std::string_view point);

private:
    struct Fault {
        std::string host;
        std::string path;
        std::string point;
        std::string kind;
        boost::json::object parameters;
        std::optional<std::uint64_t> timesLeft;
    };

    [[nodiscard]] Fault parsed(const boost::json::value &value) const;
    void apply(const Fault &fault, RouteFaults &faults);

    mutable std::mutex m_mutex;
    std::map<std::string, std::vector<std::string>, std::less<>> m_points;
    std::vector<Fault> m_faults;
    std::mt19937 m_random{std::random_device{}()};
};

/// `text` with its second half turned into noise that is neither JSON nor UTF-8.
[[nodiscard]] std::string garbled(std::string text);

} // namespace sandbox

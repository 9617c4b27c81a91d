#include "sandbox/server/RequestLog.h"

#include <boost/beast/core/string.hpp>
#include <boost/json/value_from.hpp>

#include <algorithm>
#include <array>
#include <utility>

#include "sandbox/server/Target.h"

namespace sandbox {

namespace json = boost::json;

namespace {

constexpr std::string_view mask = "***";
constexpr std::size_t longestKept = 300; // characters of a path or a value: the log stays small whatever comes in
constexpr std::size_t mostRoutes = 1000; // counted one by one: a scan of random paths must not fill the memory

bool isSecret(std::string_view name)
{
    constexpr std::array parts{"key", "authorization", "token", "cookie", "secret", "password"};
    std::string lower(name);
    std::transform(lower.begin(), lower.end(), lower.begin(),
                   [](char c) { return boost::beast::detail::ascii_tolower(c); });
    return std::any_of(parts.begin(), parts.end(),
                       [&](const char *part) { return lower.find(part) != std::string::npos; });
}

std::string shortened(std::string_view text)
{
    return text.size() <= longestKept ? std::string(text) : std::string(text.substr(0, longestKept)) + "...";
}

/// Header bytes may be anything; what is shown is ASCII.
std::string printable(std::string_view text)
{
    std::string out = shortened(text);
    std::replace_if(
        out.begin(), out.end(),
        [](char c) { return static_cast<unsigned char>(c) < 0x20 || static_cast<unsigned char>(c) > 0x7E; }, '?');
    return out;
}

std::string maskedTarget(std::string_view raw)
{
    const auto target = Target::parse(raw);
    if (!target)
        return "(malformed)";
    std::string out = printable(target->path);
    char separator = '?';
    for (const auto &[name, value] : target->query) {
        out += std::exchange(separator, '&') + printable(name) + '=';
        out += isSecret(name) ? std::string(mask) : printable(value);
    }
    return out;
}

std::string isoTime(std::chrono::system_clock::time_point time)
{
    const std::time_t seconds = std::chrono::system_clock::to_time_t(time);
    const auto ms =
        std::chrono::duration_cast<std::chrono::milliseconds>(time - std::chrono::system_clock::from_time_t(seconds))
            .count();
    std::tm utc{};
    gmtime_r(&seconds, &utc);
    std::array<char, 40> text{};
    const auto length = std::strftime(text.data(), text.size(), "%Y-%m-%dT%H:%M:%S", &utc);
    const std::string fraction = std::to_string(1000 + ms);
    return std::string(text.data(), length) + '.' + fraction.substr(1) + 'Z';
}

} // namespace

RequestLog::Entry RequestLog::entryFor(const HttpRequest &request, std::string_view host, bool throughProxy)
{
    Entry entry;
    entry.method = printable(request.method_string());
    entry.host = printable(host);
    entry.target = maskedTarget(request.target());
    entry.throughProxy = throughProxy;
    entry.bytesReceived = request.body().size();
    for (const auto &field : request)
        entry.headers[printable(field.name_string())] =
            isSecret(field.name_string()) ? std::string(mask) : printable(field.value());
    return entry;
}

void RequestLog::add(Entry entry)
{
    const std::scoped_lock lock(m_mutex);
    std::string route = entry.method + ' ' + entry.host + ' ' +
                        entry.target.substr(0, std::min(entry.target.find('?'), entry.target.size()));
    if (m_totals.size() >= mostRoutes && !m_totals.contains(route))
        route = "(others)";
    Total &total = m_totals[route];
    ++total.requests;
    ++total.byStatus[entry.status];
    total.bytesReceived += entry.bytesReceived;
    total.messagesReceived += entry.messagesReceived;
    total.messagesSent += entry.messagesSent;

    if (m_recent.size() == capacity)
        m_recent.pop_front();
    m_recent.push_back(std::move(entry));
}

void RequestLog::addProblem(std::string_view where, std::string_view what)
{
    Problem problem;
    problem.where = printable(where);
    problem.what = printable(what);
    const std::scoped_lock lock(m_mutex);
    if (m_problems.size() == capacity)
        m_problems.pop_front();
    m_problems.push_back(std::move(problem));
}

json::array RequestLog::recent() const
{
    const std::scoped_lock lock(m_mutex);
    json::array all;
    for (const auto &entry : m_recent) {
        json::object shown{
            {"time", isoTime(entry.time)},
            {"method", entry.method},
            {"host", entry.host},
            {"target", entry.target},
            {"headers", entry.headers},
            {"status", entry.status},
            {"throughProxy", entry.throughProxy},
            {"bytesReceived", entry.bytesReceived},
            {"faults", json::value_from(entry.faults)},
        };
        if (entry.webSocket) {
            shown["messagesReceived"] = entry.messagesReceived;
            shown["messagesSent"] = entry.messagesSent;
        }
        all.push_back(std::move(shown));
    }
    return all;
}

json::array RequestLog::problems() const
{
    const std::scoped_lock lock(m_mutex);
    json::array all;
    for (const auto &problem : m_problems)
        all.push_back({{"time", isoTime(problem.time)}, {"where", problem.where}, {"what", problem.what}});
    return all;
}

json::object RequestLog::totals() const
{
    const std::scoped_lock lock(m_mutex);
    json::object all;
    for (const auto &[route, total] : m_totals) {
        json::object byStatus;
        for (const auto &[status, count] : total.byStatus)
            byStatus[std::to_string(status)] = count;
        all[route] = {
            {"requests", total.requests},           {"byStatus", std::move(byStatus)},
            {"bytesReceived", total.bytesReceived}, {"messagesReceived", total.messagesReceived},
            {"messagesSent", total.messagesSent},
        };
    }
    return all;
}

} // namespace sandbox

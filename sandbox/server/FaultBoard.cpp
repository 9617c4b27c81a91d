#include "sandbox/server/FaultBoard.h"

#include <boost/json/serialize.hpp>

#include <algorithm>
#include <iterator>
#include <limits>
#include <stdexcept>
#include <utility>

#include "sandbox/server/Pattern.h"

namespace sandbox {

namespace json = boost::json;

namespace {

struct Parameter {
    std::string_view name;
    bool required;
    bool isText;
    std::int64_t least;
    std::int64_t most;
};

struct Kind {
    std::string_view name;
    std::vector<Parameter> parameters;
};

constexpr std::int64_t tenMinutesMs = 600'000;
constexpr std::int64_t anyCount = std::numeric_limits<std::int32_t>::max();

const std::vector<Kind> &routeKinds()
{
    static const std::vector<Kind> kinds{
        {"latency", {{"ms", true, false, 0, tenMinutesMs}, {"jitterMs", false, false, 0, tenMinutesMs}}},
        {"status", {{"status", true, false, 100, 599}, {"body", false, true, 0, 0}}},
        {"emptyBody", {}},
        {"garbledBody", {}},
        {"truncate", {{"bytes", false, false, 0, anyCount}}},
        {"slow", {{"bytesPerSecond", true, false, 1, anyCount}}},
        {"reset", {{"afterBytes", false, false, 0, anyCount}, {"afterMessages", false, false, 0, anyCount}}},
        {"silence", {{"afterMessages", false, false, 0, anyCount}}},
        {"close",
         {{"code", true, false, 1000, 4999},
          {"reason", false, true, 0, 0},
          {"afterMessages", false, false, 0, anyCount}}},
        {"dropPongs", {}},
    };
    return kinds;
}

[[noreturn]] void refuse(const std::string &why)
{
    throw std::invalid_argument(why);
}

std::string takeText(json::object &fault, std::string_view name, std::string otherwise)
{
    const auto *value = fault.if_contains(name);
    if (!value)
        return otherwise;
    if (!value->is_string())
        refuse("\"" + std::string(name) + "\" must be a text");
    std::string text{value->get_string()};
    fault.erase(name);
    return text;
}

std::optional<std::int64_t> integer(const json::object &object, std::string_view name)
{
    const auto *value = object.if_contains(name);
    if (!value)
        return std::nullopt;
    boost::system::error_code error;
    const auto number = value->to_number<std::int64_t>(error);
    return error ? std::nullopt : std::optional(number);
}

std::optional<std::size_t> count(const json::object &object, std::string_view name)
{
    const auto number = integer(object, name);
    return number ? std::optional(static_cast<std::size_t>(*number)) : std::nullopt;
}

std::string text(const json::object &object, std::string_view name)
{
    const auto *value = object.if_contains(name);
    return value ? std::string(value->get_string()) : std::string();
}

void check(const Kind &kind, const json::object &given)
{
    for (const auto &member : given) {
        const std::string_view name = member.key();
        const json::value &value = member.value();
        const auto parameter = std::find_if(kind.parameters.begin(), kind.parameters.end(),
                                            [name](const Parameter &p) { return p.name == name; });
        if (parameter == kind.parameters.end())
            refuse("\"" + std::string(kind.name) + "\" has no parameter \"" + std::string(name) + "\"");
        if (parameter->isText) {
            if (!value.is_string())
                refuse("\"" + std::string(name) + "\" must be a text");
            continue;
        }
        const auto number = integer(given, name);
        if (!number || *number < parameter->least || *number > parameter->most)
            refuse("\"" + std::string(name) + "\" must be a whole number from " + std::to_string(parameter->least) +
                   " to " + std::to_string(parameter->most));
    }
    for (const auto &parameter : kind.parameters) {
        if (parameter.required && !given.contains(parameter.name))
            refuse("\"" + std::string(kind.name) + "\" needs \"" + std::string(parameter.name) + "\"");
    }
}

} // namespace

void FaultBoard::declarePoint(std::string point, std::vector<std::string> kinds)
{
    const std::scoped_lock lock(m_mutex);
    m_points[std::move(point)] = std::move(kinds);
}

void FaultBoard::add(const json::array &faults)
{
    const std::scoped_lock lock(m_mutex);
    std::vector<Fault> all;
    for (const auto &fault : faults)
        all.push_back(parsed(fault));
    m_faults.insert(m_faults.end(), std::make_move_iterator(all.begin()), std::make_move_iterator(all.end()));
}

FaultBoard::Fault FaultBoard::parsed(const json::value &value) const
{
    if (!value.is_object())
        refuse("a fault is a JSON object");
    json::object rest = value.get_object();
    Fault fault;
    fault.kind = takeText(rest, "kind", "");
    if (rest.contains("times")) {
        const auto number = integer(rest, "times");
        if (!number || *number < 1)
            refuse("\"times\" must be a whole number from 1");
        fault.timesLeft = static_cast<std::uint64_t>(*number);
        rest.erase("times");
    }

    if (rest.contains("point")) {
        fault.point = takeText(rest, "point", "");
        const auto point = m_points.find(fault.point);
        if (point == m_points.end())
            refuse("no service has a point \"" + fault.point + "\"");
        if (std::find(point->second.begin(), point->second.end(), fault.kind) == point->second.end())
            refuse("\"" + fault.point + "\" has no fault \"" + fault.kind + "\"");
    } else {
        fault.host = takeText(rest, "host", "*");
        fault.path = takeText(rest, "path", "*");
        const auto &kinds = routeKinds();
        const auto kind = std::find_if(kinds.begin(), kinds.end(), [&](const Kind &k) { return k.name == fault.kind; });
        if (kind == kinds.end())
            refuse(fault.kind.empty() ? "a fault needs a \"kind\"" : "there is no fault \"" + fault.kind + "\"");
        check(*kind, rest);
        const auto status = integer(rest, "status").value_or(500);
        if (rest.contains("body") && (status < 200 || status == 204 || status == 304))
            refuse("HTTP knows no body for status " + std::to_string(status));
    }
    fault.parameters = std::move(rest);
    return fault;
}

void FaultBoard::clear()
{
    const std::scoped_lock lock(m_mutex);
    m_faults.clear();
}

json::array FaultBoard::list() const
{
    const std::scoped_lock lock(m_mutex);
    json::array all;
    for (const auto &fault : m_faults) {
        json::object entry = fault.parameters;
        if (fault.point.empty()) {
            entry["host"] = fault.host;
            entry["path"] = fault.path;
        } else {
            entry["point"] = fault.point;
        }
        entry["kind"] = fault.kind;
        if (fault.timesLeft)
            entry["times"] = *fault.timesLeft;
        all.push_back(std::move(entry));
    }
    return all;
}

RouteFaults FaultBoard::takeForRoute(std::string_view host, std::string_view path)
{
    const std::scoped_lock lock(m_mutex);
    RouteFaults faults;
    for (auto &fault : m_faults) {
        if (!fault.point.empty() || !matchesHost(fault.host, host) || !matchesPath(fault.path, path))
            continue;
        if (std::find(faults.kinds.begin(), faults.kinds.end(), fault.kind) != faults.kinds.end())
            continue;
        faults.kinds.push_back(fault.kind);
        apply(fault, faults);
        if (fault.timesLeft)
            --*fault.timesLeft;
    }
    std::erase_if(m_faults, [](const Fault &fault) { return fault.timesLeft == 0; });
    return faults;
}

std::optional<FaultBoard::PointFault> FaultBoard::take(std::string_view point)
{
    const std::scoped_lock lock(m_mutex);
    if (!m_points.contains(point))
        throw std::logic_error("undeclared fault point " + std::string(point));
    const auto found =
        std::find_if(m_faults.begin(), m_faults.end(), [&](const Fault &fault) { return fault.point == point; });
    if (found == m_faults.end())
        return std::nullopt;
    PointFault taken{found->kind, found->parameters};
    if (found->timesLeft && --*found->timesLeft == 0)
        m_faults.erase(found);
    return taken;
}

void FaultBoard::apply(const Fault &fault, RouteFaults &faults)
{
    const json::object &given = fault.parameters;
    if (fault.kind == "latency") {
        const std::int64_t jitter = integer(given, "jitterMs").value_or(0);
        const std::int64_t ms =
            integer(given, "ms").value_or(0) + std::uniform_int_distribution<std::int64_t>(-jitter, jitter)(m_random);
        faults.latency = std::chrono::milliseconds(std::max<std::int64_t>(ms, 0));
    } else if (fault.kind == "status") {
        faults.status = {static_cast<unsigned>(integer(given, "status").value_or(500)), text(given, "body")};
    } else if (fault.kind == "emptyBody") {
        faults.emptyBody = true;
    } else if (fault.kind == "garbledBody") {
        faults.garbledBody = true;
    } else if (fault.kind == "truncate") {
        faults.truncate = {count(given, "bytes")};
    } else if (fault.kind == "slow") {
        faults.bytesPerSecond = count(given, "bytesPerSecond");
    } else if (fault.kind == "reset") {
        faults.reset = {count(given, "afterBytes"), count(given, "afterMessages")};
    } else if (fault.kind == "silence") {
        faults.silence = {count(given, "afterMessages")};
    } else if (fault.kind == "close") {
        faults.close = {static_cast<std::uint16_t>(integer(given, "code").value_or(1011)), text(given, "reason"),
                        count(given, "afterMessages").value_or(0)};
    } else if (fault.kind == "dropPongs") {
        faults.dropPongs = true;
    }
}

std::string garbled(std::string text)
{
    for (std::size_t i = text.size() / 2; i < text.size(); ++i)
        text[i] = static_cast<char>(static_cast<unsigned char>(text[i]) ^ 0xA5U);
    return text;
}

} // namespace sandbox

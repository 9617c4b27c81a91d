#include "sandbox/backend/RequestReader.h"

#include <boost/json/array.hpp>
#include <boost/json/object.hpp>
#include <boost/json/parse.hpp>

#include <algorithm>
#include <charconv>

namespace sandbox {

namespace json = boost::json;

namespace {

std::size_t characterCount(std::string_view utf8)
{
    return static_cast<std::size_t>(std::count_if(
        utf8.begin(), utf8.end(), [](char c) { return (static_cast<unsigned char>(c) & 0xC0U) != 0x80U; }));
}

} // namespace

QueryReader::QueryReader(const Query &query)
    : m_query(query)
{
}

std::optional<std::string> QueryReader::text(std::string_view name)
{
    m_read.emplace(name);
    std::optional<std::string> found;
    for (const auto &[key, value] : m_query) {
        if (key != name)
            continue;
        if (found)
            complain(name, "stands there more than once");
        found = value;
    }
    return found;
}

int QueryReader::integer(std::string_view name, int least, int most, std::optional<int> fallback)
{
    const auto given = text(name);
    if (!given) {
        if (!fallback)
            complain(name, "is missing");
        return fallback.value_or(least);
    }
    int number = 0;
    const auto [end, error] = std::from_chars(given->data(), given->data() + given->size(), number);
    if (error != std::errc{} || end != given->data() + given->size() || number < least || number > most) {
        complain(name, most == std::numeric_limits<int>::max()
                           ? "must be a number from " + std::to_string(least)
                           : "must be a number from " + std::to_string(least) + " to " + std::to_string(most));
    }
    return number;
}

std::vector<std::string> QueryReader::words(std::string_view name, const std::vector<std::string> &allowed)
{
    const auto given = text(name);
    if (!given) {
        complain(name, "is missing");
        return {};
    }
    std::vector<std::string> found;
    for (std::size_t begin = 0; begin <= given->size();) {
        const auto end = std::min(given->find(',', begin), given->size());
        found.push_back(given->substr(begin, end - begin));
        if (std::find(allowed.begin(), allowed.end(), found.back()) == allowed.end())
            complain(name, "does not know '" + found.back() + "'");
        begin = end + 1;
    }
    return found;
}

std::optional<ApiError> QueryReader::problem() const
{
    if (!m_problem.empty())
        return ApiError::invalidQuery(m_problem);
    for (const auto &[key, value] : m_query) {
        if (!m_read.contains(key))
            return ApiError::invalidQuery("unknown parameter '" + key + "'");
    }
    return std::nullopt;
}

void QueryReader::complain(std::string_view name, const std::string &what)
{
    if (m_problem.empty())
        m_problem = "'" + std::string(name) + "' " + what;
}

ObjectReader::ObjectReader(const json::value &value, std::string path, FieldErrors &errors)
    : m_object(value.if_object())
    , m_path(std::move(path))
    , m_errors(errors)
{
    if (!m_object)
        complain(m_path, "must be an object");
}

ObjectReader::~ObjectReader()
{
    if (!m_object)
        return;
    for (const auto &member : *m_object) {
        if (!m_read.contains(std::string_view(member.key())))
            complain(pathOf(member.key()), "is unknown");
    }
}

const json::value *ObjectReader::member(std::string_view key)
{
    m_read.emplace(key);
    if (!m_object)
        return nullptr;
    const json::value *found = m_object->if_contains(key);
    if (!found)
        complain(pathOf(key), "is missing");
    return found;
}

std::string ObjectReader::text(std::string_view key, std::size_t longest)
{
    const json::value *found = member(key);
    if (!found)
        return {};
    if (!found->is_string()) {
        complain(pathOf(key), "must be a text");
        return {};
    }
    std::string value(found->get_string());
    if (characterCount(value) > longest)
        complain(pathOf(key), "must not be longer than " + std::to_string(longest) + " characters");
    return value;
}

const json::array &ObjectReader::array(std::string_view key, std::size_t most)
{
    static const json::array none;
    const json::value *found = member(key);
    if (!found)
        return none;
    if (!found->is_array()) {
        complain(pathOf(key), "must be an array");
        return none;
    }
    if (found->get_array().size() > most) {
        complain(pathOf(key), "must not have more than " + std::to_string(most) + " elements");
        return none;
    }
    return found->get_array();
}

std::vector<std::string> ObjectReader::texts(std::string_view key, std::size_t fewest, std::size_t most)
{
    const std::size_t problems = m_errors.size();
    std::vector<std::string> values;
    for (const auto &element : array(key, most)) {
        if (!element.is_string() || element.get_string().empty())
            complain(pathOf(key, values.size()), "must be a text that is not empty");
        values.emplace_back(element.is_string() ? std::string(element.get_string()) : std::string());
    }
    if (values.size() < fewest && m_errors.size() == problems)
        complain(pathOf(key), "must have at least " + std::to_string(fewest) + " elements");
    return values;
}

std::string ObjectReader::pathOf(std::string_view key) const
{
    return m_path + (m_path.empty() ? "" : ".") + std::string(key);
}

std::string ObjectReader::pathOf(std::string_view key, std::size_t index) const
{
    return pathOf(key) + "[" + std::to_string(index) + "]";
}

void ObjectReader::complain(std::string path, std::string what)
{
    m_errors.push_back({std::move(path), std::move(what)});
}

tl::expected<json::value, ApiError> parseBody(const std::string &text)
{
    boost::system::error_code error;
    json::value value = json::parse(text, error);
    if (error)
        return tl::unexpected(ApiError::badRequest("The body is not valid JSON."));
    return value;
}

} // namespace sandbox

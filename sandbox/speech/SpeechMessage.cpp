#include "sandbox/speech/SpeechMessage.h"

#include <boost/beast/core/string.hpp>
#include <boost/json/parse.hpp>

#include <algorithm>
#include <cctype>
#include <optional>
#include <random>

namespace sandbox {
namespace {

using boost::beast::iequals;

constexpr std::size_t maximumHeaderBytes = 8192;
constexpr std::string_view lineEnd = "\r\n";

[[noreturn]] void malformed(const std::string &reason)
{
    throw ProtocolError(ProtocolError::invalidData, reason);
}

[[noreturn]] void violation(const std::string &reason)
{
    throw ProtocolError(ProtocolError::violation, reason);
}

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

/// UTC in ISO 8601 to the second or finer: "2026-11-21T07:23:30.048Z".
bool isTimestamp(std::string_view text)
{
    constexpr std::string_view shape = "0000-00-00T00:00:00";
    if (text.size() <= shape.size() || text.back() != 'Z')
        return false;
    for (std::size_t i = 0; i < shape.size(); ++i) {
        if (shape[i] == '0' ? !isDigit(text[i]) : text[i] != shape[i])
            return false;
    }
    const auto fraction = text.substr(shape.size(), text.size() - shape.size() - 1);
    return fraction.empty() ||
           (fraction.size() > 1 && fraction.front() == '.' && std::ranges::all_of(fraction.substr(1), isDigit));
}

std::string_view trimmed(std::string_view text)
{
    const auto first = text.find_first_not_of(" \t");
    if (first == std::string_view::npos)
        return {};
    return text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

/// `lines` each end in CRLF.
SpeechMessage withHeaders(std::string_view lines, std::string_view body)
{
    if (lines.size() > maximumHeaderBytes)
        malformed("The header block is longer than 8192 bytes.");
    std::optional<std::string_view> path;
    std::optional<std::string_view> requestId;
    std::optional<std::string_view> timestamp;
    while (!lines.empty()) {
        const auto end = lines.find(lineEnd);
        if (end == std::string_view::npos)
            malformed("A header line does not end in CRLF.");
        const std::string_view line = lines.substr(0, end);
        lines.remove_prefix(end + lineEnd.size());
        const auto colon = line.find(':');
        if (colon == 0 || colon == std::string_view::npos)
            malformed("A header line has no name and colon.");
        if (!std::ranges::all_of(line, [](char c) { return (c >= ' ' && c <= '~') || c == '\t'; }))
            malformed("A header line is not printable ASCII.");
        const std::string_view name = line.substr(0, colon);
        const std::string_view value = trimmed(line.substr(colon + 1));
        for (const auto &[known, target] :
             {std::pair{"Path", &path}, std::pair{"X-RequestId", &requestId}, std::pair{"X-Timestamp", &timestamp}}) {
            if (!iequals(name, known))
                continue;
            if (*target)
                violation(std::string("There are two ") + known + " headers.");
            *target = value;
        }
    }
    if (!path || path->empty())
        violation("The Path header is missing.");
    if (!requestId || !isIdentifier(*requestId))
        violation("The X-RequestId header is missing or not 32 hexadecimal digits.");
    if (!timestamp || !isTimestamp(*timestamp))
        violation("The X-Timestamp header is missing or not a UTC time in ISO 8601.");

    SpeechMessage message{std::string(*path), std::string(*requestId), std::string(body)};
    std::ranges::transform(message.path, message.path.begin(), [](unsigned char c) { return std::tolower(c); });
    return message;
}

SpeechMessage parseText(std::string_view data)
{
    if (data.starts_with(lineEnd))
        return withHeaders({}, data.substr(lineEnd.size()));
    // At the first empty line only: bodies may have others.
    const auto separator = data.find("\r\n\r\n");
    if (separator == std::string_view::npos)
        malformed("There is no empty line after the headers.");
    const auto headerBytes = separator + lineEnd.size();
    return withHeaders(data.substr(0, headerBytes), data.substr(headerBytes + lineEnd.size()));
}

SpeechMessage parseBinary(std::string_view data)
{
    if (data.size() < 2)
        malformed("The binary message has no header length.");
    const auto length =
        static_cast<std::size_t>((static_cast<unsigned char>(data[0]) << 8) | static_cast<unsigned char>(data[1]));
    if (data.size() < 2 + length)
        malformed("The binary message is shorter than its header block.");
    return withHeaders(data.substr(2, length), data.substr(2 + length));
}

} // namespace

SpeechMessage parseSpeechMessage(const WebSocketMessage &message)
{
    SpeechMessage parsed = message.binary ? parseBinary(message.data) : parseText(message.data);
    if (message.binary != (parsed.path == "audio"))
        malformed("The message " + parsed.path + (message.binary ? " must be text." : " must be binary."));
    return parsed;
}

boost::json::object jsonBody(const SpeechMessage &message)
{
    boost::system::error_code error;
    auto value = boost::json::parse(message.body, error);
    if (error || !value.is_object())
        malformed("The body of " + message.path + " is no JSON object.");
    return std::move(value.get_object());
}

std::string textMessage(std::string_view path, std::string_view requestId, std::string_view json)
{
    std::string message;
    message.append("X-RequestId:").append(requestId).append(lineEnd);
    message.append("Content-Type:application/json; charset=utf-8").append(lineEnd);
    message.append("Path:").append(path).append(lineEnd).append(lineEnd);
    message.append(json);
    return message;
}

std::string binaryMessage(const SpeechHeaders &headers, std::string_view body)
{
    std::string lines;
    for (const auto &[name, value] : headers)
        lines.append(name).append(":").append(value).append(lineEnd);
    std::string message;
    message.push_back(static_cast<char>(lines.size() >> 8));
    message.push_back(static_cast<char>(lines.size() & 0xff));
    return message.append(lines).append(body);
}

bool isIdentifier(std::string_view text)
{
    return text.size() == 32 && std::ranges::all_of(text, [](unsigned char c) { return std::isxdigit(c) != 0; });
}

std::string makeIdentifier()
{
    thread_local std::mt19937_64 random{std::random_device{}()};
    constexpr std::string_view digits = "0123456789abcdef";
    std::string identifier(32, '0');
    std::ranges::generate(identifier, [&] { return digits[random() % digits.size()]; });
    return identifier;
}

} // namespace sandbox

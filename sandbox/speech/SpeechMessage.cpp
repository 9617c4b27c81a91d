#include "sandbox/speech/SpeechMessage.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <optional>
#include <random>

namespace sandbox {
namespace {

constexpr std::size_t maximumHeaderBytes = 8192;

char lower(char c)
{
    return static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
}

std::string lowered(std::string_view text)
{
    std::string result(text);
    std::ranges::transform(result, result.begin(), lower);
    return result;
}

std::string_view trimmed(std::string_view text)
{
    const auto first = text.find_first_not_of(" \t");
    if (first == std::string_view::npos)
        return {};
    return text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

SpeechMessage withHeaders(std::string_view lines, std::string_view body)
{
    if (lines.size() > maximumHeaderBytes)
        throw ProtocolError(ProtocolError::invalidData, "The header block is too large.");
    std::optional<std::string_view> path;
    std::optional<std::string_view> requestId;
    while (!lines.empty()) {
        const auto end = lines.find("\r\n");
        const std::string_view line = lines.substr(0, end);
        lines.remove_prefix(end == std::string_view::npos ? lines.size() : end + 2);
        if (line.empty())
            continue;
        const auto colon = line.find(':');
        if (colon == std::string_view::npos)
            throw ProtocolError(ProtocolError::invalidData, "A header line has no colon.");
        const std::string_view name = line.substr(0, colon);
        const std::string_view value = trimmed(line.substr(colon + 1));
        if (equalsIgnoringCase(name, "Path"))
            path = value;
        else if (equalsIgnoringCase(name, "X-RequestId"))
            requestId = value;
    }
    if (!path || path->empty())
        throw ProtocolError(ProtocolError::violation, "The Path header is missing.");
    if (!requestId)
        throw ProtocolError(ProtocolError::violation, "The X-RequestId header is missing.");
    if (!isIdentifier(*requestId))
        throw ProtocolError(ProtocolError::violation, "The X-RequestId header is no identifier.");
    return {std::string(*path), lowered(*requestId), std::string(body)};
}

} // namespace

bool equalsIgnoringCase(std::string_view a, std::string_view b)
{
    return std::ranges::equal(a, b, {}, lower, lower);
}

bool SpeechMessage::isPath(std::string_view other) const
{
    return equalsIgnoringCase(path, other);
}

SpeechMessage parseTextMessage(std::string_view data)
{
    // At the first empty line only: bodies may be printed over several lines.
    const auto separator = data.find("\r\n\r\n");
    if (separator == std::string_view::npos)
        throw ProtocolError(ProtocolError::invalidData, "The message has no empty line after its headers.");
    return withHeaders(data.substr(0, separator), data.substr(separator + 4));
}

SpeechMessage parseBinaryMessage(std::string_view data)
{
    if (data.size() < 2)
        throw ProtocolError(ProtocolError::invalidData, "The binary message has no header length.");
    const auto length =
        static_cast<std::size_t>((static_cast<unsigned char>(data[0]) << 8) | static_cast<unsigned char>(data[1]));
    if (data.size() < 2 + length)
        throw ProtocolError(ProtocolError::invalidData, "The binary message is shorter than its headers.");
    return withHeaders(data.substr(2, length), data.substr(2 + length));
}

std::string textMessage(std::string_view path, std::string_view requestId, std::string_view json)
{
    std::string message;
    message.append("X-RequestId:").append(requestId).append("\r\n");
    message.append("Content-Type:application/json; charset=utf-8\r\n");
    message.append("Path:").append(path).append("\r\n\r\n");
    message.append(json);
    return message;
}

std::string binaryMessage(const SpeechHeaders &headers, std::string_view body)
{
    std::string lines;
    for (const auto &[name, value] : headers)
        lines.append(name).append(":").append(value).append("\r\n");
    std::string message;
    message.push_back(static_cast<char>(lines.size() >> 8));
    message.push_back(static_cast<char>(lines.size() & 0xff));
    return message.append(lines).append(body);
}

bool isIdentifier(std::string_view text)
{
    return text.size() == 32 &&
           std::ranges::all_of(text, [](char c) { return std::isxdigit(static_cast<unsigned char>(c)) != 0; });
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

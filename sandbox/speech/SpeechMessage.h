#pragma once

#include <boost/json/object.hpp>

#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "sandbox/server/WebSocketConnection.h"

namespace sandbox {

/// The peer broke the speech protocol; the connection closes with this code and reason.
class ProtocolError : public std::runtime_error {
public:
    ProtocolError(std::uint16_t code, const std::string &reason)
        : std::runtime_error(reason)
        , m_code(code)
    {
    }
    [[nodiscard]] std::uint16_t code() const { return m_code; }

    static constexpr std::uint16_t violation = 1002;     ///< missing or malformed headers, reused request ids
    static constexpr std::uint16_t invalidData = 1007;   ///< bad framing, unusable content
    static constexpr std::uint16_t internalError = 1011; ///< not the peer's fault
    static constexpr std::uint16_t throttled = 4429;     ///< too much at once

private:
    std::uint16_t m_code;
};

/// A message from a client: header lines and a body.
struct SpeechMessage {
    std::string path;      ///< in lower case: it does not count
    std::string requestId; ///< 32 hexadecimal digits, as they came
    std::string body;
};

/// Takes a message apart. Text: header lines that end in CRLF, an empty line, the body. Binary: two bytes of header
/// length (big-endian), header lines, the body. "audio" is binary, everything else is text.
///
/// Throws ProtocolError: 1007 for bad framing, 1002 when Path, X-RequestId or X-Timestamp is missing or malformed.
[[nodiscard]] SpeechMessage parseSpeechMessage(const WebSocketMessage &message);

/// The body as JSON. Throws ProtocolError (1007) when it is no object.
[[nodiscard]] boost::json::object jsonBody(const SpeechMessage &message);

using SpeechHeaders = std::vector<std::pair<std::string_view, std::string_view>>;

/// Clients cut at the first empty line, some at the second too: `json` must have none.
[[nodiscard]] std::string textMessage(std::string_view path, std::string_view requestId, std::string_view json);
[[nodiscard]] std::string binaryMessage(const SpeechHeaders &headers, std::string_view body);

/// True for 32 hexadecimal digits.
[[nodiscard]] bool isIdentifier(std::string_view text);
/// A new one, lower case.
[[nodiscard]] std::string makeIdentifier();

} // namespace sandbox

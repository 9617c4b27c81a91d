#pragma once

#include <cstdint>
#include <map>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

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

    static constexpr std::uint16_t violation = 1002;   ///< missing or malformed headers
    static constexpr std::uint16_t invalidData = 1007; ///< bad framing, unusable content

private:
    std::uint16_t m_code;
};

/// A message of the speech protocol: header lines and a body.
struct SpeechMessage {
    std::string path;      ///< as it came; compare with `isPath`
    std::string requestId; ///< 32 hexadecimal digits, in lower case
    std::string body;

    /// Letter case does not count in paths.
    [[nodiscard]] bool isPath(std::string_view other) const;
};

/// Parses a text message: header lines ended by CRLF, an empty line, the body. Throws ProtocolError.
[[nodiscard]] SpeechMessage parseTextMessage(std::string_view data);

/// Parses a binary message: two bytes of header length (big-endian), header lines, the body. Throws ProtocolError.
[[nodiscard]] SpeechMessage parseBinaryMessage(std::string_view data);

using SpeechHeaders = std::vector<std::pair<std::string_view, std::string_view>>;

[[nodiscard]] std::string textMessage(std::string_view path, std::string_view requestId, std::string_view json);
[[nodiscard]] std::string binaryMessage(const SpeechHeaders &headers, std::string_view body);

/// True for 32 hexadecimal digits.
[[nodiscard]] bool isIdentifier(std::string_view text);
/// A new one, lower case.
[[nodiscard]] std::string makeIdentifier();

[[nodiscard]] bool equalsIgnoringCase(std::string_view a, std::string_view b);

} // namespace sandbox

#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace sandbox {

/// A stretch of text and the voice that is to say it.
struct SpokenText {
    std::string voiceName;
    std::string text;
};

/// Reads an SSML document: the voices in their order, each with all the text inside it. Prosody, breaks and styles are
/// passed over. Throws ProtocolError for what is no SSML or names no voice.
[[nodiscard]] std::vector<SpokenText> parseSsml(const std::string &ssml);

} // namespace sandbox

#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace sandbox {

/// A stretch of text and the voice that is to say it.
struct SpokenText {
    std::string voiceName;
    std::string text;

    bool operator==(const SpokenText &) const = default;
};

/// Reads an SSML document: the voices in their order, each with all the text inside it. Prosody and styles are passed
/// over; paragraphs, sentences and breaks come out as line ends; the alias of a "sub" is said in its place.
///
/// Throws ProtocolError (1007) for what is not well-formed, has a document type, is no SSML, or has text without a
/// voice.
[[nodiscard]] std::vector<SpokenText> parseSsml(std::string_view ssml);

} // namespace sandbox

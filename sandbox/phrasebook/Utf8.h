#pragma once

#include <string>
#include <string_view>

namespace sandbox {

/// Code points of `text`; a byte that is not valid UTF-8 becomes U+FFFD.
std::u32string fromUtf8(std::string_view text);

void appendUtf8(std::string &text, char32_t codePoint);

} // namespace sandbox

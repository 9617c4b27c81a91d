#include "sandbox/translation/Translator.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

namespace sandbox {

namespace {

struct Script {
    std::uint32_t first;
    std::uint32_t last;
    const char *language;
};

// Unicode blocks. Devanagari is Hindi's and Marathi's: a guess says Hindi, which more people write.
constexpr std::array scripts{
    Script{0x0041, 0x024F, "en"}, Script{0x0900, 0x097F, "hi"}, Script{0x0980, 0x09FF, "bn"},
    Script{0x0A80, 0x0AFF, "gu"}, Script{0x0C00, 0x0C7F, "te"},
};

/// Code points of valid UTF-8.
template<class Visit> void eachCodePoint(std::string_view utf8, Visit visit)
{
    for (std::size_t i = 0; i < utf8.size();) {
        const auto lead = static_cast<unsigned char>(utf8[i]);
        const std::size_t length = lead < 0x80 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
        std::uint32_t code = length == 1 ? lead : lead & (0x7FU >> length);
        for (std::size_t k = 1; k < length && i + k < utf8.size(); ++k)
            code = code << 6U | (static_cast<unsigned char>(utf8[i + k]) & 0x3FU);
        visit(code);
        i += length;
    }
}

Translator::Detection guessByScript(std::string_view text)
{
    std::array<std::size_t, scripts.size()> counts{};
    std::size_t all = 0;
    eachCodePoint(text, [&](std::uint32_t code) {
        for (std::size_t i = 0; i < scripts.size(); ++i) {
            if (code >= scripts[i].first && code <= scripts[i].last) {
                ++counts[i];
                ++all;
            }
        }
    });
    const auto most = std::max_element(counts.begin(), counts.end());
    if (*most == 0)
        return {"en", 0.0};
    // Never certain: a script is not a language.
    const double share = static_cast<double>(*most) / static_cast<double>(all);
    return {scripts[static_cast<std::size_t>(most - counts.begin())].language, 0.9 * share};
}

bool isBlank(std::string_view text)
{
    return text.find_first_not_of(" \t\r\n") == std::string_view::npos;
}

} // namespace

Translator::Translation Translator::translate(std::string_view text, const std::optional<std::string> &from,
                                              const std::vector<std::string> &to) const
{
    Translation result;
    const Phrase *phrase = nullptr;
    std::optional<std::string> known = from;
    if (from) {
        phrase = m_book.find(text, *from);
    } else if (const auto match = m_book.find(text)) {
        phrase = match->phrase;
        known = match->language;
        result.detected = {match->language, 1.0};
    } else {
        result.detected = guessByScript(text);
    }

    for (const auto &target : to) {
        if (isBlank(text) || known == target)
            result.texts.emplace_back(text);
        else if (phrase)
            result.texts.push_back(phrase->text.find(target)->second);
        else
            result.texts.push_back("[" + target + "] " + std::string(text));
    }
    return result;
}

} // namespace sandbox

#include "sandbox/phrasebook/Utf8.h"

namespace sandbox {
namespace {

constexpr char32_t replacement = 0xFFFD;

/// Length of the sequence that `lead` begins, 0 when it cannot begin one.
std::size_t sequenceLength(unsigned char lead)
{
    if (lead < 0x80)
        return 1;
    if (lead >= 0xC2 && lead < 0xE0)
        return 2;
    if (lead >= 0xE0 && lead < 0xF0)
        return 3;
    return lead >= 0xF0 && lead < 0xF5 ? 4 : 0;
}

} // namespace

std::u32string fromUtf8(std::string_view text)
{
    static constexpr char32_t smallest[] = {0, 0, 0x80, 0x800, 0x10000};
    std::u32string result;
    result.reserve(text.size());
    for (std::size_t i = 0; i < text.size();) {
        const auto lead = static_cast<unsigned char>(text[i]);
        const auto length = sequenceLength(lead);
        char32_t c = length <= 1 ? lead : lead & (0xFFU >> (length + 1));
        bool valid = length != 0 && i + length <= text.size();
        for (std::size_t k = 1; valid && k < length; ++k) {
            const auto next = static_cast<unsigned char>(text[i + k]);
            valid = (next & 0xC0U) == 0x80;
            c = (c << 6U) | (next & 0x3FU);
        }
        valid = valid && c >= smallest[length] && c <= 0x10FFFF && (c < 0xD800 || c > 0xDFFF);
        result.push_back(valid ? c : replacement);
        i += valid ? length : 1;
    }
    return result;
}

void appendUtf8(std::string &text, char32_t c)
{
    const auto tail = [c](unsigned shift) { return static_cast<char>(0x80U | ((c >> shift) & 0x3FU)); };
    if (c < 0x80) {
        text += static_cast<char>(c);
    } else if (c < 0x800) {
        text += static_cast<char>(0xC0U | (c >> 6U));
        text += tail(0);
    } else if (c < 0x10000) {
        text += static_cast<char>(0xE0U | (c >> 12U));
        (text += tail(6)) += tail(0);
    } else {
        text += static_cast<char>(0xF0U | (c >> 18U));
        ((text += tail(12)) += tail(6)) += tail(0);
    }
}

} // namespace sandbox

#include "sandbox/recognition/PhoneMap.h"

#include "sandbox/phrasebook/Utf8.h"

#include <algorithm>
#include <fstream>
#include <sstream>
#include <stdexcept>

namespace sandbox {
namespace {

constexpr char32_t lengthMark = U'ː';
constexpr char32_t combiningTilde = U'\u0303';

std::string trimmed(const std::string &text)
{
    const auto first = text.find_first_not_of(' ');
    return first == std::string::npos ? "" : text.substr(first, text.find_last_not_of(' ') - first + 1);
}

bool isMark(char32_t c)
{
    // Stress, syllabic and dental marks, ties, zero width joiner, separators that espeak-ng writes.
    return c == U'ˈ' || c == U'ˌ' || c == U'\u0329' || c == U'\u032A' || c == U'\u0361' || c == U'\u200D' ||
           c == U'_' || c == U'-' || c == U'|' || c == U' ' || c == U'\n';
}

/// The spelling that the map uses: "~" for nasal, ʰ for breathy too.
std::u32string simplified(std::string_view ipa)
{
    std::u32string result;
    for (const char32_t c : fromUtf8(ipa)) {
        if (isMark(c))
            continue;
        result += c == combiningTilde ? U'~' : c == U'ʱ' ? U'ʰ' : c;
    }
    return result;
}

/// Consonants are written once however long they are, also where two words' sounds meet.
Pronunciation withoutDoubles(const std::vector<std::string> &phones)
{
    Pronunciation result;
    std::string last;
    for (const auto &phone : phones) {
        if (phone == last)
            continue;
        result += result.empty() ? phone : " " + phone;
        last = phone;
    }
    return result;
}

struct Candidate {
    std::vector<std::string> phones;
    std::size_t rank = 0; ///< sum of its phones' places in their lists
};

} // namespace

PhoneMap PhoneMap::load(const std::filesystem::path &file)
{
    std::ifstream in(file, std::ios::binary);
    if (!in)
        throw std::runtime_error("cannot read the phone map " + file.string());

    PhoneMap map;
    int lineNumber = 0;
    for (std::string line; std::getline(in, line);) {
        ++lineNumber;
        if (lineNumber == 1)
            continue;
        if (!line.empty() && line.back() == '\r')
            line.pop_back();
        const auto firstTab = line.find('\t');
        const auto secondTab = firstTab == std::string::npos ? firstTab : line.find('\t', firstTab + 1);
        if (secondTab == std::string::npos || secondTab == firstTab + 1)
            throw std::runtime_error(file.string() + ":" + std::to_string(lineNumber) +
                                     ": expected language, phoneme and phones, separated by tabs");
        Alternatives alternatives;
        std::string rest = line.substr(secondTab + 1);
        for (std::size_t comma = 0; comma != std::string::npos;) {
            comma = rest.find(',');
            alternatives.push_back(trimmed(rest.substr(0, comma)));
            rest.erase(0, comma == std::string::npos ? rest.size() : comma + 1);
        }
        const auto phoneme = fromUtf8(line.substr(firstTab + 1, secondTab - firstTab - 1));
        map.m_languages[line.substr(0, firstTab)][phoneme] = std::move(alternatives);
    }
    return map;
}

std::filesystem::path PhoneMap::defaultFile()
{
    return SANDBOX_PHONES_FILE;
}

std::vector<Pronunciation> PhoneMap::pronunciations(std::string_view ipa, std::string_view language,
                                                    std::size_t limit) const
{
    const auto entry = m_languages.find(language);
    if (entry == m_languages.end())
        return {};
    const auto &phonemes = entry->second;
    constexpr std::size_t longestPhoneme = 3;

    std::vector<Candidate> candidates{{}};
    const auto text = simplified(ipa);
    for (std::size_t at = 0; at < text.size();) {
        auto length = std::min(longestPhoneme, text.size() - at);
        auto found = phonemes.end();
        for (; length > 0 && found == phonemes.end(); --length)
            found = phonemes.find(text.substr(at, length));
        if (found == phonemes.end()) {
            if (text[at] != lengthMark)
                return {};
            ++at;
            continue;
        }
        at += length + 1;

        std::vector<Candidate> longer;
        for (const auto &candidate : candidates) {
            for (std::size_t rank = 0; rank < found->second.size(); ++rank) {
                auto next = candidate;
                next.rank += rank;
                std::istringstream phones(found->second[rank]);
                for (std::string phone; phones >> phone;)
                    next.phones.push_back(phone);
                longer.push_back(std::move(next));
            }
        }
        std::stable_sort(longer.begin(), longer.end(), [](const auto &a, const auto &b) { return a.rank < b.rank; });
        longer.resize(std::min(longer.size(), limit));
        candidates = std::move(longer);
    }

    std::vector<Pronunciation> result;
    for (const auto &candidate : candidates) {
        auto pronunciation = withoutDoubles(candidate.phones);
        if (!pronunciation.empty() && std::find(result.begin(), result.end(), pronunciation) == result.end())
            result.push_back(std::move(pronunciation));
    }
    return result;
}

} // namespace sandbox

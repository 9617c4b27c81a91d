#pragma once

#include <filesystem>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace sandbox {

/// A word's sounds in the phones of the acoustic model, separated by spaces ("N AH M AH S T IY").
using Pronunciation = std::string;

/// How the phonemes of a language sound in the phones of the (English) acoustic model, the nearest first.
class PhoneMap {
public:
    /// Reads a tab-separated file: a heading line, then language code, phoneme in the International Phonetic Alphabet,
    /// and the phones it may be heard as, separated by commas (a phone may be a sequence, or nothing). Throws
    /// std::runtime_error with file and line when it is not there or not of that form.
    static PhoneMap load(const std::filesystem::path &file);

    /// The phone map of the source tree that this was built from.
    static std::filesystem::path defaultFile();

    /// At most `limit` ways to say the word that espeak-ng writes as `ipa`, the likeliest first. Stress, length of
    /// consonants, breathiness and syllable marks do not count. Empty when a phoneme is not in the map.
    [[nodiscard]] std::vector<Pronunciation> pronunciations(std::string_view ipa, std::string_view language,
                                                            std::size_t limit = 8) const;

private:
    using Alternatives = std::vector<std::string>;
    std::map<std::string, std::map<std::u32string, Alternatives>, std::less<>> m_languages;
};

} // namespace sandbox

#pragma once

#include <array>
#include <cstddef>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace sandbox {

/// Translator codes of the book's languages, in the order of the file's columns.
inline constexpr std::array<std::string_view, 6> phrasebookLanguages{"en", "hi", "gu", "mr", "bn", "te"};

/// One sentence of the book in all six languages, keyed by translator code ("en", "hi", "gu", "mr", "bn", "te").
struct Phrase {
    std::string id;
    std::map<std::string, std::string, std::less<>> text;
};

/// The sentences that the sandbox can recognise, and their translations. Immutable after loading.
///
/// Pointers to phrases live as long as the book they came from (a copy has its own).
class Phrasebook {
public:
    /// Reads a tab-separated file: a heading line "id" and the six codes, then a sentence a line. Throws
    /// std::runtime_error with file and line when it is not there or not of that form; an id that stands twice, or two
    /// sentences that read the same in one language, are not of that form.
    static Phrasebook load(const std::filesystem::path &file);

    /// The book of the source tree that this was built from.
    static std::filesystem::path defaultFile();

    [[nodiscard]] const std::vector<Phrase> &phrases() const { return m_phrases; }

    struct Match {
        const Phrase *phrase;
        std::string language; ///< code of the language the text was found in
    };

    /// The sentence that `text` is, in any of the languages; letter case, punctuation, and white space do not count.
    /// Text that several languages share (Hindi and Marathi do) is found in the first of them.
    [[nodiscard]] std::optional<Match> find(std::string_view text) const;

    /// The same in one language only; null when `text` is not in the book in that language.
    [[nodiscard]] const Phrase *find(std::string_view text, std::string_view language) const;

    /// What `find` compares: UTF-8 without punctuation, white space and joiners, Latin letters lower-case, letters with
    /// nukta and split vowel signs in their decomposed form (both spellings are common in the wild).
    static std::string normalised(std::string_view text);

private:
    struct Place {
        std::size_t phrase;
        std::size_t language;
    };

    std::vector<Phrase> m_phrases;
    std::map<std::string, std::vector<Place>, std::less<>> m_byNormalisedText;
};

} // namespace sandbox

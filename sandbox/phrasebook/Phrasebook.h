#pragma once

#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace sandbox {

/// One sentence of the book in all six languages, keyed by translator code ("en", "hi", "gu", "mr", "bn", "te").
struct Phrase {
    std::string id;
    std::map<std::string, std::string, std::less<>> text;
};

/// The sentences that the sandbox can recognise, and their translations. Immutable after loading.
class Phrasebook {
public:
    /// Reads a tab-separated file: a heading line "id" and the six codes, then a sentence a line. Throws
    /// std::runtime_error with file and line when it is not there or not of that form.
    static Phrasebook load(const std::filesystem::path &file);

    [[nodiscard]] const std::vector<Phrase> &phrases() const { return m_phrases; }

    struct Match {
        const Phrase *phrase;
        std::string language; ///< code of the language the text was found in
    };

    /// The sentence that `text` is, in any of the languages; letter case, punctuation, and white space do not count.
    [[nodiscard]] std::optional<Match> find(std::string_view text) const;

private:
    std::vector<Phrase> m_phrases;
    std::map<std::string, std::vector<Match>, std::less<>> m_byNormalisedText;
};

} // namespace sandbox

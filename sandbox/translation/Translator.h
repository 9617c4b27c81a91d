#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "sandbox/phrasebook/Phrasebook.h"

namespace sandbox {

/// Translates by phrasebook. Sentences of the book come out as the book has them; any other text comes out marked
/// ("[hi] text"), so that nobody takes it for a translation.
///
/// Reads the book only: any thread. The book must outlive the translator.
class Translator {
public:
    explicit Translator(const Phrasebook &book)
        : m_book(book)
    {
    }

    struct Detection {
        std::string language;
        double score; ///< 1 for a sentence of the book, less for a guess by script
    };

    struct Translation {
        std::optional<Detection> detected; ///< when `from` was not given
        std::vector<std::string> texts;    ///< in the order of `to`
    };

    /// `from` and `to` are translator codes. Text without any visible character, and text whose language is known to be
    /// the target's, comes back as it is.
    [[nodiscard]] Translation translate(std::string_view text, const std::optional<std::string> &from,
                                        const std::vector<std::string> &to) const;

private:
    const Phrasebook &m_book;
};

} // namespace sandbox

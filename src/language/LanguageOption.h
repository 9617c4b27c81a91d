#pragma once

#include <QString>

#include <array>
#include <optional>

namespace vynlex {

/// The six languages, in the order of the picker's rows.
enum class LanguageOption { english, hindi, gujarati, marathi, bengali, telugu };

inline constexpr std::array allLanguageOptions = {LanguageOption::english,  LanguageOption::hindi,
                                                  LanguageOption::gujarati, LanguageOption::marathi,
                                                  LanguageOption::bengali,  LanguageOption::telugu};

/// What the kit knows of a language.
struct LanguageEntry {
    LanguageOption option;
    QString displayName;       ///< in the language's own script; the raw value that is persisted
    QString translatorCode;    ///< the translator's language code
    QString recognitionLocale; ///< the speech recogniser's language
    QString synthesisVoice;    ///< the speech service's neural voice
    QString promptText;        ///< shown before a conversation starts
};

[[nodiscard]] const LanguageEntry &languageEntry(LanguageOption option);

/// The display name.
[[nodiscard]] const QString &rawValue(LanguageOption option);

/// The language of a display name; exact, nothing for any other text.
[[nodiscard]] std::optional<LanguageOption> languageFromRawValue(QStringView rawValue);

} // namespace vynlex

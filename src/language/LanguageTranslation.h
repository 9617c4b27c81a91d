#pragma once

#include <memory>

#include "language/LanguageOption.h"
#include "language/Side.h"

namespace vynlex {

class UserDefaults;

/// The two chosen languages of a conversation, kept in the per-user defaults store, and what follows from them.
///
/// Every look-up reads the store anew. A side whose entry is absent or names no language has its default: English for
/// the speaker, Hindi for the listener. Any thread.
class LanguageTranslation {
public:
    /// Uses the current platform's store unless given another.
    explicit LanguageTranslation(std::shared_ptr<UserDefaults> store = {});

    static LanguageTranslation &shared();

    [[nodiscard]] LanguageOption language(Side side) const;
    [[nodiscard]] QString displayName(Side side) const;
    [[nodiscard]] QString translatorCode(Side side) const;
    [[nodiscard]] QString recognitionLocale(Side side) const;
    [[nodiscard]] QString promptText(Side side) const;
    [[nodiscard]] QString voice(Side side) const;

    /// The voice of the language with exactly this recognition locale; "en-US-AriaNeural" for any other text.
    [[nodiscard]] static QString voiceForLocale(QStringView locale);

    /// Stores the language's display name under the side's key.
    void store(Side side, LanguageOption option);

private:
    [[nodiscard]] std::shared_ptr<UserDefaults> userDefaults() const;
    [[nodiscard]] const LanguageEntry &entry(Side side) const;

    std::shared_ptr<UserDefaults> m_store;
};

} // namespace vynlex

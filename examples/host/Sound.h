#pragma once

#include <QString>

#include <chrono>
#include <tl/expected.hpp>

namespace host {

/// What somebody would say of a sound that they heard.
struct SoundFacts {
    std::chrono::milliseconds duration{0};
    double levelDb = 0; ///< Root mean square; 0 is full scale.

    /// Long and loud enough for a word.
    [[nodiscard]] bool isSpeech() const;
};

/// One clear line for a sound in which nobody says a word.
[[nodiscard]] tl::expected<void, QString> expectSpeech(const SoundFacts &sound);

/// Of a WAV file. An error is one clear line.
tl::expected<SoundFacts, QString> listenTo(const QString &wavFile);

} // namespace host

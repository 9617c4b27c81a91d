#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

#include "platform/speech/SpeechEndpoint.h"
#include "platform/speech/SpeechService.h"

namespace vynlex {

/// What the client says in JSON.
QByteArray recognitionConfigBody(RecognitionMode mode);                           ///< speech.config
QByteArray recognitionContextBody(RecognitionMode mode, const QString &language); ///< speech.context
QByteArray synthesisConfigBody();                                                 ///< speech.config
QByteArray synthesisContextBody(const QByteArray &outputFormat);                  ///< synthesis.context

/// RIFF/WAVE header of 16 kHz, 16-bit, mono PCM of unknown length: 44 bytes, sizes zero.
QByteArray waveStreamHeader();

/// In the service's order, which is also its numbering when a status comes as a number.
enum class PhraseStatus {
    Success,
    NoMatch,
    InitialSilenceTimeout,
    BabbleTimeout,
    Error,
    EndOfDictation,
    TooManyRequests,
    BadRequest,
    Forbidden,
    Unknown, ///< A word or number that this client does not know, or none.
};

/// The body of a `speech.phrase`. Times count from the turn's first sample; they are never negative and their sum does
/// not overflow. What is missing or mistyped is zero or empty.
struct SpeechPhrase {
    PhraseStatus status = PhraseStatus::Unknown;
    QString text;
    Ticks offset{};
    Ticks duration{};

    bool operator==(const SpeechPhrase &) const = default;
};

/// Nothing when the body is not a JSON object.
std::optional<SpeechPhrase> readPhrase(const QByteArray &body);

} // namespace vynlex

#pragma once

#include <QByteArray>
#include <QDateTime>

#include <optional>

namespace vynlex {

/// One message of the speech service: a block of `Name: value` lines and a body. The same content travels as a text
/// message (the first empty line ends the block) or as a binary one (a 16-bit big-endian length precedes the block).
struct SpeechMessage {
    QByteArray path;        ///< "speech.phrase", "audio", ...
    QByteArray requestId;   ///< 32 hexadecimal digits; the turn that the message belongs to
    QByteArray contentType; ///< Left out when empty.
    QByteArray body;

    [[nodiscard]] bool hasPath(const char *name) const { return path.compare(name, Qt::CaseInsensitive) == 0; }
    [[nodiscard]] bool belongsTo(const QByteArray &id) const { return requestId.compare(id, Qt::CaseInsensitive) == 0; }

    bool operator==(const SpeechMessage &) const = default;
};

/// `time` becomes the message's X-Timestamp, in UTC with milliseconds.
QByteArray encodeText(const SpeechMessage &message, const QDateTime &time);
QByteArray encodeBinary(const SpeechMessage &message, const QDateTime &time);

/// Header names in any case, the blank after the colon optional, unknown headers and lines without a colon skipped.
/// Nothing when there is no `Path`, no empty line, or the length points beyond the message.
std::optional<SpeechMessage> decodeText(const QByteArray &utf8);
std::optional<SpeechMessage> decodeBinary(const QByteArray &data);

/// A new request or connection id: 32 lower-case hexadecimal digits, no dashes.
QByteArray makeSpeechId();

} // namespace vynlex

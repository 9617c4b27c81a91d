#pragma once

#include <QString>

#include <cstdint>
#include <vector>

#include "language/Side.h"

namespace host {

/// What came of one turn of a conversation. Times are milliseconds from the end of speech: from the moment at which the
/// microphone had delivered the last of what was said.
struct TurnRecord {
    vynlex::Side side;
    QString from; ///< translator code
    QString to;
    QString recognised;
    QString translated;
    QString spoken;     ///< WAV file, relative to the transcript
    QString screenshot; ///< PNG file, relative to the transcript
    std::int64_t recognisedMs = 0;
    std::int64_t translatedMs = 0;
    std::int64_t spokenMs = 0; ///< until the translation had been heard to its end
};

/// What came of one voice message. Files are relative to the transcript.
struct MessageRecord {
    QString from;
    QString to;
    QString language; ///< translator code
    QString said;     ///< the phrase, or the file that was said
    QString recognised;
    QString wireText;            ///< as the backend has it
    std::int64_t receivedMs = 0; ///< from the tap on the sender's button to the arrival over the other's socket
    QString voice;
    QString heard; ///< WAV file of what the other one heard
    std::int64_t heardMs = 0;
    double heardDb = 0; ///< root mean square; 0 is full scale
    std::vector<QString> pictures;
};

/// Writes transcript.json into `folder`; false when it cannot be written.
[[nodiscard]] bool writeTranscript(const QString &folder, const std::vector<TurnRecord> &turns);
[[nodiscard]] bool writeTranscript(const QString &folder, const std::vector<MessageRecord> &messages);

} // namespace host

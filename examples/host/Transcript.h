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

/// Writes `turns` as transcript.json into `folder`; false when it cannot be written.
[[nodiscard]] bool writeTranscript(const QString &folder, const std::vector<TurnRecord> &turns);

} // namespace host

#pragma once

#include <string>
#include <string_view>

namespace sandbox {

/// Checks the RIFF header in front of a turn's audio and returns what follows it in `body`; its sizes may be zero, as
/// those of a stream are. Throws ProtocolError (1007) unless it announces 16 kHz, 16-bit, mono PCM.
[[nodiscard]] std::string_view withoutWaveHeader(std::string_view body);

/// True for what begins like a RIFF header.
[[nodiscard]] bool beginsWithWaveHeader(std::string_view body);

/// For 16-bit mono PCM of unknown length: the sizes are the largest, so that readers go on to the end.
[[nodiscard]] std::string streamWaveHeader(int sampleRateHz);

} // namespace sandbox

#pragma once

#include <QtGlobal>

#include <array>
#include <chrono>

namespace vynlex {

/// How long the client waits, how often it tries again, and how much it keeps. The service documents few figures; where
/// no source is named the value is this client's own choice, generous for a phone on a poor line.
struct SpeechLimits {
    using milliseconds = std::chrono::milliseconds;

    /// From the start of a connection to the end of its upgrade: as for every socket of the kit.
    static constexpr milliseconds upgrade{20'000};
    /// From a turn's first message to the service's first answer to it.
    static constexpr milliseconds turnStart{10'000};
    /// From the end of the audio, or the last message since, to `turn.end`.
    static constexpr milliseconds turnEnd{20'000};
    /// Synthesis: from `turn.start` to the first piece of sound, and from any piece to the next or to `turn.end`.
    static constexpr milliseconds firstAudio{10'000};
    static constexpr milliseconds nextAudio{10'000};

    /// Reconnects without a phrase that covers audio in between: four, as the service's own clients do, each after its
    /// pause.
    static constexpr std::array reconnectPauses{milliseconds(100), milliseconds(500), milliseconds(2'000),
                                                milliseconds(5'000)};
    /// A turn is hasty when it ends within this time without having covered this much audio (the same span of either).
    /// After each hasty turn in a row there is a pause; one more than there are pauses cancels.
    static constexpr milliseconds hastyTurn{1'000};
    static constexpr std::array hastyTurnPauses{milliseconds(100),   milliseconds(250),   milliseconds(500),
                                                milliseconds(1'000), milliseconds(2'000), milliseconds(4'000)};

    /// 16 kHz, 16-bit, mono.
    static constexpr qint64 bytesPerSecond = 32'000;
    /// One audio message: 100 ms, as the service's own clients send; it takes at most 8192 bytes.
    static constexpr qint64 pieceBytes = 3'200;
    /// Sent without delay on each connection; then at most twice real time, because the service does not keep up with
    /// more. Both as the service's own clients.
    static constexpr qint64 fastBytes = 5 * bytesPerSecond;
    static constexpr int maximumSpeed = 2;
    /// Audio that was sent but is not covered by a phrase: 180 s, after which a service that said nothing would close
    /// the connection itself. 5.5 MiB.
    static constexpr qint64 maximumUnacknowledgedBytes = 180 * bytesPerSecond;
    /// All audio that is kept, what waits to be sent included: 10 min, 18 MiB.
    static constexpr qint64 maximumKeptBytes = 600 * bytesPerSecond;
    /// Sound for one text: 10 min, the longest that the service makes.
    static constexpr std::chrono::seconds maximumSound{600};
};

} // namespace vynlex

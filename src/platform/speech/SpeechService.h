#pragma once

#include <QString>

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <tl/expected.hpp>

#include "platform/speech/PushAudioInputStream.h"
#include "platform/speech/SpeechConfig.h"

namespace vynlex {

/// The speech service's unit of time.
using Ticks = std::chrono::duration<std::int64_t, std::ratio<1, 10'000'000>>;

enum class ResultReason { NoMatch, Canceled, RecognizedSpeech, SynthesizingAudioCompleted };
enum class CancellationReason { Error = 1, EndOfStream = 2, CancelledByUser = 3 };
enum class CancellationErrorCode {
    NoError = 0,
    AuthenticationFailure = 1,
    BadRequest = 2,
    TooManyRequests = 3,
    Forbidden = 4,
    ConnectionFailure = 5,
    ServiceTimeout = 6,
    ServiceError = 7,
    ServiceUnavailable = 8,
    RuntimeError = 9,
};

struct CancellationDetails {
    CancellationReason reason = CancellationReason::Error;
    CancellationErrorCode errorCode = CancellationErrorCode::NoError;
    QString errorDetails; ///< Never holds a key.

    bool operator==(const CancellationDetails &) const = default;
};

struct SpeechRecognitionResult {
    ResultReason reason = ResultReason::NoMatch;
    QString text;   ///< With capitals and punctuation; empty for NoMatch.
    Ticks offset{}; ///< From the first sample written to the stream, over all turns and connections.
    Ticks duration{};
};

/// Where a recogniser hears from: a push stream, for now the only kind.
struct AudioConfig {
    static AudioConfig fromStreamInput(PushAudioInputStream stream) { return {std::move(stream)}; }

    PushAudioInputStream stream;
};

/// Continuous recognition of one stream.
///
/// Set the handlers before starting. They run on the speech service's thread, one at a time. `canceled` comes at most
/// once and ends the recognition: with reason EndOfStream (no details) after a closed stream has been recognised to its
/// end, with reason Error otherwise. Destroying the recogniser drops the connection and what was not recognised; once
/// the destructor has returned no handler runs (it waits for a handler that is running, unless called from it).
class SpeechRecognizer {
public:
    virtual ~SpeechRecognizer() = default;

    std::function<void(const SpeechRecognitionResult &)> recognized;
    std::function<void(const CancellationDetails &)> canceled;

    /// Any thread; does not wait for the service. Fails when it has been started before.
    virtual tl::expected<void, QString> startContinuousRecognition() = 0;
};

struct SpeechSynthesisResult {
    ResultReason reason = ResultReason::SynthesizingAudioCompleted;
    CancellationDetails cancellation; ///< Set when the reason is Canceled.
    Ticks audioDuration{};
};

/// Speaks texts through the loudspeaker.
class SpeechSynthesizer {
public:
    virtual ~SpeechSynthesizer() = default;

    /// Runs on the thread that called `speakText`, as soon as a stop would reach the text. Set before speaking.
    std::function<void()> synthesisStarted;
    /// Runs on the speech service's thread when a text has been heard to its end. Set before speaking.
    std::function<void(const SpeechSynthesisResult &)> synthesisCompleted;

    /// Blocks until the text has been heard to its end (after `synthesisCompleted` has run), or was cancelled or
    /// stopped (reason Canceled). Fails with a sentence when the loudspeaker does not work. Any thread but the main one
    /// and the speech service's.
    virtual tl::expected<SpeechSynthesisResult, QString> speakText(const QString &text) = 0;

    /// The sound ends within 50 ms and a blocked `speakText` returns with CancelledByUser. Does not wait. Any thread.
    /// Nothing being spoken is fine.
    virtual tl::expected<void, QString> stopSpeaking() = 0;
};

/// Port: the speech service's client.
class SpeechService {
public:
    virtual ~SpeechService() = default;

    /// Any thread. Both fail with a sentence when the object cannot be made (for a synthesiser: when there is no
    /// loudspeaker).
    virtual tl::expected<std::shared_ptr<SpeechRecognizer>, QString> makeRecognizer(const SpeechConfig &config,
                                                                                    const AudioConfig &audio) = 0;
    virtual tl::expected<std::shared_ptr<SpeechSynthesizer>, QString> makeSynthesizer(const SpeechConfig &config) = 0;
};

} // namespace vynlex

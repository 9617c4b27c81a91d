#pragma once

#include <QString>

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>

#include "platform/audio/AudioEngine.h"
#include "platform/dispatch/SerialQueue.h"
#include "platform/speech/SpeechService.h"

namespace vynlex {

class LanguageTranslation;
class VLApiManager;

/// Turns what the microphone hears into final texts through the speech service's continuous recognition.
///
/// Owned by `shared_ptr`; make, start, stop and release it on the main thread. Key and region are copied when it is
/// made, so a configuration stored later does not reach it. Starting and stopping return at once and take effect one
/// after the other on a queue of their own, in the order of the calls, so that a stop right after a start leaves no
/// microphone running. Releasing it stops everything.
///
/// Failures are console lines only. Two end the process: a configuration or a recogniser that cannot be made.
class SpeachToTextViewModel : public std::enable_shared_from_this<SpeachToTextViewModel> {
public:
    static constexpr std::int64_t sampleRate = 16000; ///< Hz, what the service hears
    static constexpr std::int64_t bufferSize = 2048;  ///< frames of the microphone's own rate, per tapped buffer

    static std::shared_ptr<SpeachToTextViewModel> create();
    SpeachToTextViewModel(const VLApiManager &apiManager, const LanguageTranslation &languages);
    ~SpeachToTextViewModel();

    /// `text` is empty when the service recognised nothing; `duration` is the service's, in its ticks of 100 ns.
    using ResultHandler = std::function<void(const QString &text, std::int64_t duration)>;

    /// Listens in the language of a side. `onResult` runs on the main queue for every final result, until the next
    /// start or the end of this object. Starting again without a stop replaces the recogniser and the tap.
    void startSpeechRecognition(bool isSpeaker, ResultHandler onResult);

    /// Stops the microphone and ends the recogniser's input; what it has heard is still recognised. On a model that
    /// was never started this is a programming error and ends the process.
    void stopSpeechRecognition();

private:
    void start(SpeechConfig config, const ResultHandler &onResult);
    void captureAudio(const PushAudioInputStream &stream);
    void stop();

    const QString m_sub;
    const QString m_region;
    const LanguageTranslation &m_languages;

    std::uint64_t m_startCount = 0; ///< on the main thread

    // On the control queue only.
    std::unique_ptr<AudioEngine> m_audioEngine;
    std::optional<PushAudioInputStream> m_pushStream;
    std::shared_ptr<SpeechRecognizer> m_reco;

    SerialQueue m_conversionQueue{QStringLiteral("conversionQueue")};
    SerialQueue m_controlQueue{QStringLiteral("recognitionControl")};
};

/// The duration that an owner receives for a result of `ticks`: turned into a time of 1000 units per second and back,
/// then truncated. Ends the process when that time cannot be expressed, deliberately.
[[nodiscard]] std::int64_t wholeDuration(Ticks ticks);

} // namespace vynlex

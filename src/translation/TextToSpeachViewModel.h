#pragma once

#include <QString>

#include <cstdint>
#include <functional>
#include <memory>

#include "platform/dispatch/Guarded.h"
#include "platform/speech/SpeechService.h"

namespace vynlex {

class LanguageTranslation;
class VLApiManager;

/// Reads texts aloud in a voice of the speech service.
///
/// Make it on the main thread; it copies key and region then, so a configuration stored later does not reach it. There
/// is no queue of utterances: a second call while one speaks is a second sound.
class TextToSpeachViewModel {
public:
    TextToSpeachViewModel(const VLApiManager &apiManager, const LanguageTranslation &languages);
    TextToSpeachViewModel();

    /// Reads `text` and blocks until it has been heard, stopped or has failed; on a global queue. `voiceName` is a
    /// voice of the service, or empty for the voice of the side's language. `onCompleted` runs on the speech service's
    /// thread when the text has been heard to its end; every failure is a console line only. An empty text prepares
    /// everything and speaks nothing.
    void speakText(const QString &text, bool isSpeaker, const QString &voiceName,
                   const std::function<void()> &onCompleted);

    /// Stops the text that was begun last. Any thread; does not wait. Nothing being spoken is fine.
    void stopSpeaking();

private:
    const QString m_sub;
    const QString m_region;
    const LanguageTranslation &m_languages;

    /// A call of `speakText` is known by its number from its first line on, so that a stop cannot come too early.
    struct Speaking {
        std::uint64_t lastCall = 0;
        std::uint64_t stoppedCall = 0;
        std::shared_ptr<SpeechSynthesizer> synthesizer; ///< of the last call; null while that prepares
    };
    Guarded<Speaking> m_speaking;
};

} // namespace vynlex

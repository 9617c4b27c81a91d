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

    /// The number of a text that another thread is about to read, and from now on the text that was begun last: a stop
    /// reaches it before that thread has come to it. Any thread.
    [[nodiscard]] std::uint64_t announce();
    /// Reads the text that was announced under this number.
    void speakText(std::uint64_t call, const QString &text, bool isSpeaker, const QString &voiceName,
                   const std::function<void()> &onCompleted);

    /// Stops the text that was begun last, and all that are not heard yet. Any thread; does not wait. Nothing being
    /// spoken is fine.
    void stopSpeaking();

private:
    static void stop(SpeechSynthesizer &synthesizer);

    const QString m_sub;
    const QString m_region;
    const LanguageTranslation &m_languages;

    struct Speaking {
        std::uint64_t lastCall = 0;
        std::uint64_t stoppedCall = 0; ///< Up to here, none that does not sound yet will.
        std::shared_ptr<SpeechSynthesizer> synthesizer;
        std::uint64_t synthesizerCall = 0; ///< Whose it is. Behind the last while that prepares.
    };
    Guarded<Speaking> m_speaking;
};

} // namespace vynlex

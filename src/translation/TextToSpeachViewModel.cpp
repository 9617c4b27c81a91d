#include "translation/TextToSpeachViewModel.h"

#include "api/VLApiManager.h"
#include "language/LanguageTranslation.h"
#include "platform/device/Platform.h"
#include "platform/dispatch/Console.h"
#include "translation/AudioManager.h"

using namespace Qt::StringLiterals;

namespace vynlex {

TextToSpeachViewModel::TextToSpeachViewModel(const VLApiManager &apiManager, const LanguageTranslation &languages)
    : m_sub(apiManager.translatedConfig ? apiManager.translatedConfig->speechKey() : QString())
    , m_region(apiManager.translatedConfig ? apiManager.translatedConfig->speechRegion() : QString())
    , m_languages(languages)
{
}

TextToSpeachViewModel::TextToSpeachViewModel()
    : TextToSpeachViewModel(VLApiManager::shared(), LanguageTranslation::shared())
{
}

std::uint64_t TextToSpeachViewModel::announce()
{
    return m_speaking.with([](Speaking &speaking) { return ++speaking.lastCall; });
}

void TextToSpeachViewModel::speakText(const QString &text, bool isSpeaker, const QString &voiceName,
                                      const std::function<void()> &onCompleted)
{
    speakText(announce(), text, isSpeaker, voiceName, onCompleted);
}

void TextToSpeachViewModel::speakText(std::uint64_t call, const QString &text, bool isSpeaker, const QString &voiceName,
                                      const std::function<void()> &onCompleted)
{
    AudioManager::setUpAudioSession();

    auto config = SpeechConfig::fromSubscription(m_sub, m_region);
    if (!config) {
        consoleLine("Error creating speech configuration: "_L1 + config.error());
        return;
    }
    config->setSpeechSynthesisVoiceName(
        voiceName.isEmpty() ? m_languages.voice(isSpeaker ? Side::Speaker : Side::Listener) : voiceName);

    const auto made = Platform::current()->speechService->makeSynthesizer(*config);
    if (!made) {
        consoleLine("Error creating speech synthesizer: "_L1 + made.error());
        return;
    }
    const std::shared_ptr<SpeechSynthesizer> &synthesizer = *made;
    const auto isStopped = [call](const Speaking &speaking) { return call <= speaking.stoppedCall; };
    synthesizer->synthesisStarted = [this, isStopped, &speaker = *synthesizer] {
        // A stop that came while the loudspeaker was being opened has found nothing that speaks.
        if (m_speaking.with(isStopped))
            stop(speaker);
    };
    synthesizer->synthesisCompleted = [onCompleted](const SpeechSynthesisResult &) {
        consoleLine(u"completedSynthesizer"_s);
        onCompleted();
    };
    std::shared_ptr<SpeechSynthesizer> previous = synthesizer; // let go of outside of the lock
    const bool stopped = m_speaking.with([&](Speaking &speaking) {
        if (speaking.lastCall == call) {
            speaking.synthesizer.swap(previous);
            speaking.synthesizerCall = call;
        }
        return isStopped(speaking);
    });
    previous.reset();

    if (text.isEmpty() || stopped)
        return; // Nothing to say, and deliberately nobody is told.

    const auto result = synthesizer->speakText(text);
    if (!result)
        consoleLine("Error during speech synthesis: "_L1 + result.error());
    else if (result->reason == ResultReason::Canceled)
        consoleLine("Speech synthesis cancelled, detail: "_L1 + result->cancellation.errorDetails + u' ');
}

void TextToSpeachViewModel::stopSpeaking()
{
    const auto synthesizer = m_speaking.with([](Speaking &speaking) {
        speaking.stoppedCall = speaking.lastCall;
        return speaking.synthesizerCall == speaking.lastCall ? speaking.synthesizer : nullptr;
    });
    if (synthesizer)
        stop(*synthesizer);
}

void TextToSpeachViewModel::stop(SpeechSynthesizer &synthesizer)
{
    // The words are those of a failed creation, deliberately: one line stands for both.
    if (const auto stopped = synthesizer.stopSpeaking(); !stopped)
        consoleLine("Error creating speech synthesizer: "_L1 + stopped.error());
}

} // namespace vynlex

#include "translation/AudioManager.h"

#include "platform/device/Platform.h"
#include "platform/dispatch/Console.h"

namespace vynlex {

void AudioManager::setUpAudioSession()
{
    const auto session = Platform::current()->audioSession;
    const auto outcome = session
                             ->setCategory(AudioSession::Category::PlayAndRecord, AudioSession::Mode::VoiceChat,
                                           AudioSession::Option::DefaultToSpeaker)
                             .and_then([&] { return session->setActive(true); });
    if (!outcome)
        consoleLine(QLatin1String("Error setting audio session category: ") + outcome.error());
}

} // namespace vynlex

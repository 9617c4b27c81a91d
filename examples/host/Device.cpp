#include "Device.h"

#include "platform/device/Platform.h"
#include "platform/storage/QSettingsUserDefaults.h"

using namespace vynlex;

namespace host {
namespace {

/// Writes down whose voice is asked for.
class NotingSpeechService final : public SpeechService {
public:
    NotingSpeechService(std::shared_ptr<SpeechService> service, std::shared_ptr<Guarded<QString>> lastVoice)
        : m_service(std::move(service))
        , m_lastVoice(std::move(lastVoice))
    {
    }

    tl::expected<std::shared_ptr<SpeechRecognizer>, QString> makeRecognizer(const SpeechConfig &config,
                                                                            const AudioConfig &audio) override
    {
        return m_service->makeRecognizer(config, audio);
    }

    tl::expected<std::shared_ptr<SpeechSynthesizer>, QString> makeSynthesizer(const SpeechConfig &config) override
    {
        m_lastVoice->set(config.speechSynthesisVoiceName());
        return m_service->makeSynthesizer(config);
    }

private:
    const std::shared_ptr<SpeechService> m_service;
    const std::shared_ptr<Guarded<QString>> m_lastVoice;
};

} // namespace

Device::Device(Room &room, const QString &settingsFile, bool headless)
{
    Platform platform = Platform::shipped();
    m_hasMicrophone = !headless && platform.makeAudioEngine()->inputFormat().sampleRateHz > 0;
    if (!m_hasMicrophone)
        platform.makeAudioEngine = [&room] { return room.makeAudioEngine(); };
    // Recordings of what is to be said go into files also where there is a loudspeaker.
    platform.makeAudioPlayer = [&room, headless, makeLoudspeaker = platform.makeAudioPlayer] {
        return headless || room.isRecording() ? room.makeAudioPlayer() : makeLoudspeaker();
    };
    if (!settingsFile.isEmpty())
        platform.userDefaults = std::make_shared<QSettingsUserDefaults>(settingsFile);
    platform.speechService = std::make_shared<NotingSpeechService>(platform.speechService, m_lastVoice);
    Platform::install(std::move(platform));
}

} // namespace host

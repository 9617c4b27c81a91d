#include "Room.h"

#include "platform/audio/WavAudioPlayer.h"

using namespace vynlex;

namespace host {

Room::Room(Speed speed)
    : m_speed(speed)
    , m_playback(speed)
    , m_microphone(speed == Speed::RealTime ? WavMicrophone::Pace::RealTime : WavMicrophone::Pace::AsFastAsAccepted)
    , m_speechEnded(std::make_shared<Guarded<std::optional<std::chrono::steady_clock::time_point>>>())
{
    m_microphone.setObserver([ended = m_speechEnded](const WavMicrophone::Said &said) { ended->set(said.end); });
}

std::unique_ptr<AudioEngine> Room::makeAudioEngine() const
{
    return m_microphone.makeEngine();
}

std::unique_ptr<AudioPlayer> Room::makeAudioPlayer()
{
    const QString asked = m_recording.exchange({});
    const QString file = asked.isEmpty() ? m_temporary.filePath(QStringLiteral("unasked.wav")) : asked;
    return std::make_unique<WavAudioPlayer>(file, m_playback.copy() == Speed::RealTime
                                                      ? WavAudioPlayer::Pace::RealTime
                                                      : WavAudioPlayer::Pace::AsFastAsWritten);
}

tl::expected<void, QString> Room::say(const QString &wavFile)
{
    m_speechEnded->set(std::nullopt);
    return m_microphone.say(wavFile);
}

std::optional<std::chrono::steady_clock::time_point> Room::speechEnded() const
{
    return m_speechEnded->copy();
}

void Room::record(const QString &wavFile)
{
    m_recording.set(wavFile);
}

} // namespace host

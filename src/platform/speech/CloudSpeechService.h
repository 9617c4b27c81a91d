#pragma once

#include <functional>
#include <memory>

#include "platform/audio/AudioPlayer.h"
#include "platform/net/WebSocketClient.h"
#include "platform/speech/SpeechEndpoint.h"
#include "platform/speech/SpeechService.h"

namespace vynlex {

/// The shipped speech service: the cloud service's WebSocket protocol over the socket worker, one connection per
/// recognition and one per spoken text.
///
/// A recogniser connects when it is started. A synthesiser opens the loudspeaker and connects for each text; several
/// texts at once are several sounds, and `stopSpeaking` ends them all. Recognisers and synthesisers outlive the service
/// object freely.
class CloudSpeechService final : public SpeechService {
public:
    using MakeAudioPlayer = std::function<std::unique_ptr<AudioPlayer>()>;

    CloudSpeechService(std::shared_ptr<SocketWorker> worker, MakeAudioPlayer makeAudioPlayer,
                       SpeechHostTable hosts = publicCloudHosts().speech);

    tl::expected<std::shared_ptr<SpeechRecognizer>, QString> makeRecognizer(const SpeechConfig &config,
                                                                            const AudioConfig &audio) override;
    tl::expected<std::shared_ptr<SpeechSynthesizer>, QString> makeSynthesizer(const SpeechConfig &config) override;

private:
    std::shared_ptr<SocketWorker> m_worker;
    MakeAudioPlayer m_makeAudioPlayer;
    SpeechHostTable m_hosts;
};

} // namespace vynlex

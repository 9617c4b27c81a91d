#include "platform/speech/CloudSpeechService.h"

#include <atomic>
#include <vector>

#include "platform/dispatch/Guarded.h"
#include "platform/speech/HandlerGate.h"
#include "platform/speech/RecognitionSession.h"
#include "platform/speech/SynthesisSession.h"

namespace vynlex {
namespace {

class CloudSpeechRecognizer final : public SpeechRecognizer {
public:
    CloudSpeechRecognizer(std::shared_ptr<SocketWorker> worker, SpeechHostTable hosts, SpeechConfig config,
                          AudioConfig audio)
        : m_worker(std::move(worker))
        , m_hosts(std::move(hosts))
        , m_config(std::move(config))
        , m_audio(std::move(audio))
    {
    }

    ~CloudSpeechRecognizer() override
    {
        if (const auto session = m_session.copy())
            session->stop();
    }

    tl::expected<void, QString> startContinuousRecognition() override
    {
        const RecognitionMode mode =
            m_config.isDictationEnabled() ? RecognitionMode::Dictation : RecognitionMode::Conversation;
        const QString language = m_config.speechRecognitionLanguage();
        const auto session = std::make_shared<RecognitionSession>(
            *m_worker,
            RecognitionSettings{recognitionUrl(m_hosts, m_config.region(), language, mode), m_config.subscriptionKey(),
                                language, mode},
            m_audio.stream, RecognitionHandlers{recognized, canceled});
        const bool first = m_session.with([&](auto &started) {
            if (started)
                return false;
            started = session;
            return true;
        });
        if (!first)
            return tl::unexpected(QStringLiteral("The recogniser has been started before."));
        session->start();
        return {};
    }

private:
    std::shared_ptr<SocketWorker> m_worker;
    SpeechHostTable m_hosts;
    SpeechConfig m_config;
    AudioConfig m_audio;
    Guarded<std::shared_ptr<RecognitionSession>> m_session;
};

class CloudSpeechSynthesizer final : public SpeechSynthesizer {
public:
    CloudSpeechSynthesizer(std::shared_ptr<SocketWorker> worker, CloudSpeechService::MakeAudioPlayer makeAudioPlayer,
                           SpeechHostTable hosts, SpeechConfig config)
        : m_worker(std::move(worker))
        , m_makeAudioPlayer(std::move(makeAudioPlayer))
        , m_hosts(std::move(hosts))
        , m_config(std::move(config))
    {
    }

    ~CloudSpeechSynthesizer() override
    {
        m_gate->close();
        stopAll();
    }

    tl::expected<SpeechSynthesisResult, QString> speakText(const QString &text) override
    {
        // Whoever destroys this object releases the wait below, so what follows it touches locals only.
        const std::shared_ptr worker = m_worker;
        std::unique_ptr<AudioPlayer> player = m_makeAudioPlayer();
        if (!player)
            return tl::unexpected(QStringLiteral("There is no loudspeaker."));
        const auto session = std::make_shared<SynthesisSession>(
            *worker,
            SynthesisSettings{synthesisUrl(m_hosts, m_config.region()), m_config.subscriptionKey(),
                              m_config.speechSynthesisVoiceName()},
            std::move(player), synthesisCompleted, m_gate);
        m_sessions.with([&](auto &sessions) {
            std::erase_if(sessions, [](const auto &past) { return past.expired(); });
            sessions.push_back(session);
        });
        if (const auto started = synthesisStarted)
            started();
        return session->speak(text);
    }

    tl::expected<void, QString> stopSpeaking() override
    {
        stopAll();
        return {};
    }

private:
    void stopAll()
    {
        for (const auto &weak : m_sessions.copy()) {
            if (const auto session = weak.lock())
                session->stop();
        }
    }

    std::shared_ptr<SocketWorker> m_worker;
    CloudSpeechService::MakeAudioPlayer m_makeAudioPlayer;
    SpeechHostTable m_hosts;
    SpeechConfig m_config;
    std::shared_ptr<HandlerGate> m_gate = std::make_shared<HandlerGate>();
    Guarded<std::vector<std::weak_ptr<SynthesisSession>>> m_sessions;
};

} // namespace

CloudSpeechService::CloudSpeechService(std::shared_ptr<SocketWorker> worker, MakeAudioPlayer makeAudioPlayer,
                                       SpeechHostTable hosts)
    : m_worker(std::move(worker))
    , m_makeAudioPlayer(std::move(makeAudioPlayer))
    , m_hosts(std::move(hosts))
{
}

tl::expected<std::shared_ptr<SpeechRecognizer>, QString> CloudSpeechService::makeRecognizer(const SpeechConfig &config,
                                                                                            const AudioConfig &audio)
{
    return std::make_shared<CloudSpeechRecognizer>(m_worker, m_hosts, config, audio);
}

tl::expected<std::shared_ptr<SpeechSynthesizer>, QString>
CloudSpeechService::makeSynthesizer(const SpeechConfig &config)
{
    if (!m_makeAudioPlayer)
        return tl::unexpected(QStringLiteral("There is no loudspeaker."));
    return std::make_shared<CloudSpeechSynthesizer>(m_worker, m_makeAudioPlayer, m_hosts, config);
}

} // namespace vynlex

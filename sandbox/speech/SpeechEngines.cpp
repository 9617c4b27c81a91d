#include "sandbox/speech/SpeechEngines.h"

#include <utility>

namespace sandbox {
namespace {

class StreamedTurn final : public TurnRecogniser {
public:
    StreamedTurn(std::shared_ptr<RecogniserModels> models, std::string_view locale)
        : m_recogniser(std::move(models), locale)
    {
    }

    std::vector<RecognitionEvent> feed(std::span<const std::int16_t> samples) override
    {
        return m_recogniser.feed(samples);
    }
    std::vector<RecognitionEvent> finish() override { return m_recogniser.finish(); }

private:
    StreamingRecogniser m_recogniser;
};

class LocalEngines final : public SpeechEngines {
public:
    explicit LocalEngines(std::shared_ptr<RecogniserModels> models)
        : m_models(std::move(models))
    {
    }

    std::unique_ptr<TurnRecogniser> startRecogniser(std::string_view locale) override
    {
        return std::make_unique<StreamedTurn>(m_models, locale);
    }
    [[nodiscard]] bool hasVoice(std::string_view name) const override { return m_voices.has(name); }
    void speak(std::string_view text, std::string_view voiceName, int sampleRateHz,
               const VoiceBank::Sink &sink) override
    {
        m_voices.speak(text, voiceName, sampleRateHz, sink);
    }

private:
    std::shared_ptr<RecogniserModels> m_models;
    VoiceBank m_voices;
};

} // namespace

std::shared_ptr<SpeechEngines> makeSpeechEngines(std::shared_ptr<RecogniserModels> models)
{
    return std::make_shared<LocalEngines>(std::move(models));
}

} // namespace sandbox

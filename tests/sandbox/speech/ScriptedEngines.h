#pragma once

#include <atomic>
#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

#include "sandbox/speech/SpeechEngines.h"

namespace sandbox::test {

/// Engines that do what the test says. The recogniser is played by where in its turn it is.
class ScriptedEngines final : public SpeechEngines {
public:
    /// The events that become due when `samples` of a turn have been heard.
    struct Step {
        std::int64_t samples;
        std::vector<RecognitionEvent> events;
    };
    std::vector<Step> script;
    std::vector<RecognitionEvent> atEnd; ///< of a turn's audio
    std::vector<std::string> locales;    ///< of the turns so far
    std::vector<std::int64_t> heard;     ///< samples of each turn so far
    bool broken = false;

    /// What the voice does with its text; `sink` takes samples.
    std::function<void(const std::string &text, const VoiceBank::Sink &sink)> voice;

    std::unique_ptr<TurnRecogniser> startRecogniser(std::string_view locale) override
    {
        locales.emplace_back(locale);
        heard.push_back(0);
        return std::make_unique<Recogniser>(*this);
    }
    [[nodiscard]] bool hasVoice(std::string_view name) const override { return name == "V"; }
    void speak(std::string_view text, std::string_view, int, const VoiceBank::Sink &sink) override
    {
        voice(std::string(text), sink);
    }

private:
    class Recogniser final : public TurnRecogniser {
    public:
        explicit Recogniser(ScriptedEngines &engines)
            : m_engines(engines)
        {
        }
        std::vector<RecognitionEvent> feed(std::span<const std::int16_t> samples) override
        {
            if (m_engines.broken)
                throw std::runtime_error("out of order");
            const auto before = m_engines.heard.back();
            const auto after = m_engines.heard.back() += static_cast<std::int64_t>(samples.size());
            std::vector<RecognitionEvent> due;
            for (const Step &step : m_engines.script) {
                if (step.samples > before && step.samples <= after)
                    due.insert(due.end(), step.events.begin(), step.events.end());
            }
            return due;
        }
        std::vector<RecognitionEvent> finish() override { return m_engines.atEnd; }

    private:
        ScriptedEngines &m_engines;
    };
};

/// Lets a thread wait until another says so.
class Gate {
public:
    void open()
    {
        m_open = true;
        m_open.notify_all();
    }
    void pass() const { m_open.wait(false); }

private:
    std::atomic<bool> m_open = false;
};

} // namespace sandbox::test

#include "sandbox/recognition/StreamingRecogniser.h"

#include "sandbox/recognition/EndPointer.h"
#include "sandbox/recognition/RecogniserModels.h"
#include "sandbox/recognition/UtteranceDecoder.h"

#include <algorithm>
#include <cmath>
#include <optional>

namespace sandbox {
namespace {

/// Frames of speech before the first look at what is being said. Each further look is after twice the time, so that all
/// of them together cost no more than the last.
constexpr std::int64_t firstLook = 80;

constexpr double scoreScale = 10;

Ticks ticks(std::int64_t samples)
{
    return Ticks(samples * (Ticks::period::den / EndPointer::sampleRateHz));
}

/// 0.5 at the threshold, towards 1 for a perfect match.
double confidence(double score, double threshold)
{
    return 1 / (1 + std::exp((threshold - score) / scoreScale));
}

} // namespace

struct StreamingRecogniser::State {
    using Events = std::vector<RecognitionEvent>;

    State(std::shared_ptr<RecogniserModels> shared, std::string_view locale)
        : models(std::move(shared))
        , language(RecogniserModels::languageOf(locale))
        , decoder(models->takeDecoder(language))
    {
    }
    ~State() { models->giveBack(language, std::move(decoder)); }
    State(const State &) = delete;
    State &operator=(const State &) = delete;

    void handle(EndPointer::Event event, Events &events);
    void look(Events &events);
    void decode();
    void hypothesis(const EndPointer::Clip &clip, const std::string &text, Events &events);

    std::shared_ptr<RecogniserModels> models;
    std::string language;
    std::unique_ptr<UtteranceDecoder> decoder;
    EndPointer endPointer;
    std::vector<std::int16_t> pending; // less than a frame
    std::int64_t nextLook = firstLook;
    std::string lastHypothesis;

    // What the utterance is if nothing more is said, once there was a pause.
    std::optional<EndPointer::Clip> decodedClip;
    std::optional<UtteranceDecoder::Decoding> decoding;
};

void StreamingRecogniser::State::handle(EndPointer::Event event, Events &events)
{
    const auto clip = endPointer.clip();
    switch (event) {
    case EndPointer::Event::Started:
        nextLook = firstLook;
        lastHypothesis.clear();
        decodedClip.reset();
        events.emplace_back(SpeechStarted{ticks(clip.firstSample)});
        break;
    case EndPointer::Event::Paused:
        decode();
        if (decoding) {
            std::string words;
            for (const auto word : decoding->sentence->words)
                words += (words.empty() ? "" : " ") + models->grammar(language).words[word].spoken;
            hypothesis(clip, words, events);
        }
        break;
    case EndPointer::Event::Ended:
        if (!decodedClip || decodedClip->endSample != clip.endSample)
            decode();
        events.emplace_back(SpeechEnded{ticks(clip.endSample)});
        events.emplace_back(RecognisedPhrase{
            decoding ? decoding->sentence->text : "", ticks(clip.firstSample), ticks(clip.endSample - clip.firstSample),
            decoding ? confidence(decoding->score, models->grammar(language).acceptanceThreshold) : 0});
        break;
    }
}

/// Decodes the utterance as far as it goes; keeps what is good enough.
void StreamingRecogniser::State::decode()
{
    decodedClip = endPointer.clip();
    decoding = decoder->decode(decodedClip->samples);
    if (decoding && decoding->score < models->grammar(language).acceptanceThreshold)
        decoding.reset();
}

void StreamingRecogniser::State::look(Events &events)
{
    nextLook *= 2;
    const auto clip = endPointer.clip();
    hypothesis(clip, decoder->beginning(clip.samples), events);
}

void StreamingRecogniser::State::hypothesis(const EndPointer::Clip &clip, const std::string &text, Events &events)
{
    if (text.empty() || text == lastHypothesis)
        return;
    lastHypothesis = text;
    events.emplace_back(Hypothesis{text, ticks(clip.firstSample), ticks(clip.endSample - clip.firstSample)});
}

StreamingRecogniser::StreamingRecogniser(std::shared_ptr<RecogniserModels> models, std::string_view locale)
    : m_state(std::make_unique<State>(std::move(models), locale))
{
}

StreamingRecogniser::~StreamingRecogniser() = default;
StreamingRecogniser::StreamingRecogniser(StreamingRecogniser &&) noexcept = default;

std::vector<RecognitionEvent> StreamingRecogniser::feed(std::span<const std::int16_t> samples)
{
    std::vector<RecognitionEvent> events;
    auto &pending = m_state->pending;
    auto &endPointer = m_state->endPointer;
    pending.insert(pending.end(), samples.begin(), samples.end());
    std::size_t at = 0;
    for (; pending.size() - at >= EndPointer::frameSamples; at += EndPointer::frameSamples) {
        const std::span<const std::int16_t, EndPointer::frameSamples> frame(pending.data() + at,
                                                                            EndPointer::frameSamples);
        if (const auto event = endPointer.push(frame))
            m_state->handle(*event, events);
        else if (endPointer.speechFrames() >= m_state->nextLook)
            m_state->look(events);
    }
    pending.erase(pending.begin(), pending.begin() + static_cast<std::ptrdiff_t>(at));
    return events;
}

std::vector<RecognitionEvent> StreamingRecogniser::finish()
{
    std::vector<RecognitionEvent> events;
    if (const auto event = m_state->endPointer.finish())
        m_state->handle(*event, events);
    return events;
}

} // namespace sandbox

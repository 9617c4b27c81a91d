#include "tests/fakes/FakeSpeechService.h"

#include <QDebug>

#include <thread>
#include <utility>

#include "platform/dispatch/MainQueue.h"

namespace vynlex {
namespace {

SpeechSettings settingsOf(const SpeechConfig &config)
{
    return {config.subscriptionKey(), config.region(), config.speechRecognitionLanguage(),
            config.speechSynthesisVoiceName(), config.isDictationEnabled()};
}

bool deliver(const std::function<bool()> &call)
{
    bool delivered = false;
    std::thread([&] { delivered = call(); }).join();
    return delivered;
}

template<typename Value> std::optional<Value> takeFrom(Guarded<std::optional<Value>> &next)
{
    return next.exchange(std::nullopt);
}

class FakeSpeechRecognizer final : public SpeechRecognizer {
public:
    FakeSpeechRecognizer(SpeechConfig config, AudioConfig audio, std::shared_ptr<FakeSpeechService::State> service,
                         std::shared_ptr<FakeRecognition::State> state)
        : m_config(std::move(config))
        , m_audio(std::move(audio))
        , m_service(std::move(service))
        , m_state(std::move(state))
    {
    }

    ~FakeSpeechRecognizer() override
    {
        if (m_state->seen.with([](auto &seen) { return seen.started; }))
            m_audio.stream.setReader({}, {});
        m_state->gate.close();
        m_state->seen.with([](auto &seen) {
            seen.alive = false;
            seen.recognized = nullptr;
            seen.canceled = nullptr;
        });
    }

    tl::expected<void, QString> startContinuousRecognition() override
    {
        if (const auto failure = takeFrom(m_service->startFailure))
            return tl::unexpected(*failure);
        const bool first = m_state->seen.with([&](auto &seen) {
            seen.settings = settingsOf(m_config);
            seen.recognized = recognized;
            seen.canceled = canceled;
            return !std::exchange(seen.started, true);
        });
        if (!first)
            return tl::unexpected(QStringLiteral("The recogniser has been started before."));
        const std::weak_ptr state = m_state;
        m_audio.stream.setReader(
            [state](const QByteArray &pcm) {
                if (const auto alive = state.lock())
                    alive->seen.with([&](auto &seen) { seen.audio += pcm; });
            },
            [state] {
                if (const auto alive = state.lock())
                    alive->seen.with([](auto &seen) { seen.closed = true; });
            });
        return {};
    }

private:
    SpeechConfig m_config;
    AudioConfig m_audio;
    std::shared_ptr<FakeSpeechService::State> m_service;
    std::shared_ptr<FakeRecognition::State> m_state;
};

class FakeSpeechSynthesizer final : public SpeechSynthesizer {
public:
    FakeSpeechSynthesizer(SpeechConfig config, std::shared_ptr<FakeSpeechService::State> service)
        : m_config(std::move(config))
        , m_service(std::move(service))
    {
    }

    ~FakeSpeechSynthesizer() override
    {
        m_gate->close();
        stopAll();
    }

    tl::expected<SpeechSynthesisResult, QString> speakText(const QString &text) override
    {
        // Whoever destroys this object releases the wait below, so what follows the first steps touches locals only.
        const auto service = m_service;
        const auto utterance = std::make_shared<FakeUtterance::State>();
        utterance->text = text;
        utterance->settings = settingsOf(m_config);
        utterance->completed = synthesisCompleted;
        utterance->gate = m_gate;
        m_utterances.with([&](auto &all) { all.push_back(utterance); });
        const bool completesAtOnce = service->lists.with([&](auto &lists) {
            lists.utterances.push_back(utterance);
            return lists.completesAtOnce;
        });
        if (const auto started = synthesisStarted)
            started();

        if (const auto failure = takeFrom(service->speakFailure)) {
            if (utterance->claim())
                utterance->release(tl::unexpected(*failure));
        } else if (const auto cancellation = takeFrom(service->speakCancellation)) {
            utterance->cancel(*cancellation);
        } else if (completesAtOnce) {
            utterance->complete();
        } else if (MainQueue::isCurrent()) {
            qFatal("FakeSpeechService: speakText would block the main thread for ever.");
        }
        return utterance->wait();
    }

    tl::expected<void, QString> stopSpeaking() override
    {
        if (const auto failure = takeFrom(m_service->stopFailure))
            return tl::unexpected(*failure);
        stopAll();
        return {};
    }

private:
    void stopAll()
    {
        for (const auto &utterance : m_utterances.copy())
            utterance->stop();
    }

    SpeechConfig m_config;
    std::shared_ptr<FakeSpeechService::State> m_service;
    std::shared_ptr<HandlerGate> m_gate = std::make_shared<HandlerGate>();
    Guarded<std::vector<std::shared_ptr<FakeUtterance::State>>> m_utterances;
};

/// Runs the handler that `member` was at the start. After a value that `ends` there is nothing more to deliver.
template<typename Handler, typename Value>
bool deliverTo(FakeRecognition::State &state, Handler FakeRecognition::Seen::*member, const Value &value, bool ends)
{
    const Handler handler = state.seen.with([&](FakeRecognition::Seen &seen) {
        if (!seen.started)
            qFatal("FakeSpeechService: delivered to a recogniser that was not started.");
        if (seen.cancelled)
            qFatal("FakeSpeechService: delivered to a recogniser that had been cancelled.");
        seen.cancelled = ends;
        return seen.*member;
    });
    return handler && deliver([&] { return state.gate.run([&] { handler(value); }); });
}

template<typename State> std::shared_ptr<State> lastOf(const std::vector<std::shared_ptr<State>> &all)
{
    if (all.empty())
        qFatal("FakeSpeechService: there is none yet.");
    return all.back();
}

} // namespace

bool FakeRecognition::deliverRecognized(const SpeechRecognitionResult &result)
{
    return deliverTo(*m_state, &Seen::recognized, result, false);
}

bool FakeRecognition::deliverCanceled(const CancellationDetails &details)
{
    return deliverTo(*m_state, &Seen::canceled, details, true);
}

tl::expected<std::shared_ptr<SpeechRecognizer>, QString> FakeSpeechService::makeRecognizer(const SpeechConfig &config,
                                                                                           const AudioConfig &audio)
{
    const auto recognition = std::make_shared<FakeRecognition::State>();
    m_state->lists.with([&](auto &lists) { lists.recognitions.push_back(recognition); });
    return std::make_shared<FakeSpeechRecognizer>(config, audio, m_state, recognition);
}

tl::expected<std::shared_ptr<SpeechSynthesizer>, QString> FakeSpeechService::makeSynthesizer(const SpeechConfig &config)
{
    if (const auto failure = takeFrom(m_state->synthesizerFailure))
        return tl::unexpected(*failure);
    m_state->lists.with([](auto &lists) { ++lists.synthesizers; });
    return std::make_shared<FakeSpeechSynthesizer>(config, m_state);
}

FakeRecognition FakeSpeechService::lastRecognition() const
{
    return FakeRecognition(lastOf(m_state->lists.copy().recognitions));
}

QStringList FakeSpeechService::textsBeingSpoken() const
{
    QStringList texts;
    for (const auto &utterance : m_state->lists.copy().utterances) {
        if (FakeUtterance(utterance).isSpeaking())
            texts << utterance->text;
    }
    return texts;
}

FakeUtterance FakeSpeechService::lastUtterance() const
{
    return FakeUtterance(lastOf(m_state->lists.copy().utterances));
}

bool FakeUtterance::State::claim()
{
    const std::lock_guard lock(mutex);
    return !std::exchange(claimed, true);
}

void FakeUtterance::State::release(Outcome value)
{
    const std::lock_guard lock(mutex);
    outcome = std::move(value);
    ended.notify_all();
}

bool FakeUtterance::State::complete()
{
    if (!claim())
        return false;
    const SpeechSynthesisResult result{
        ResultReason::SynthesizingAudioCompleted, {}, std::chrono::milliseconds(60) * text.size()};
    // A synthesiser that goes in between hears nothing, and its text was not heard to its end.
    const bool heard = !completed || deliver([&] { return gate->run([&] { completed(result); }); });
    release(heard ? result
                  : SpeechSynthesisResult{ResultReason::Canceled, {CancellationReason::CancelledByUser, {}, {}}, {}});
    return true;
}

bool FakeUtterance::State::cancel(const CancellationDetails &details)
{
    if (!claim())
        return false;
    release(SpeechSynthesisResult{ResultReason::Canceled, details, {}});
    return true;
}

void FakeUtterance::State::stop()
{
    const std::lock_guard lock(mutex);
    if (std::exchange(claimed, true))
        return;
    stopped = true;
    outcome = SpeechSynthesisResult{
        ResultReason::Canceled, {CancellationReason::CancelledByUser, CancellationErrorCode::NoError, {}}, {}};
    ended.notify_all();
}

FakeUtterance::State::Outcome FakeUtterance::State::wait()
{
    std::unique_lock lock(mutex);
    ended.wait(lock, [&] { return outcome.has_value(); });
    return *outcome;
}

} // namespace vynlex

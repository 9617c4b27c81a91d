#include "tests/fakes/FakeSpeechService.h"

#include <QDebug>

#include <condition_variable>
#include <mutex>
#include <thread>
#include <utility>

#include "platform/dispatch/Guarded.h"
#include "platform/dispatch/MainQueue.h"
#include "platform/speech/HandlerGate.h"

namespace vynlex {
namespace {

SpeechSettings settingsOf(const SpeechConfig &config)
{
    return {config.subscriptionKey(), config.region(), config.speechRecognitionLanguage(),
            config.speechSynthesisVoiceName(), config.isDictationEnabled()};
}

template<typename Function> bool deliver(Delivery delivery, Function &&function)
{
    if (delivery == Delivery::Inline)
        return function();
    bool delivered = false;
    std::thread([&] { delivered = function(); }).join();
    return delivered;
}

template<typename Value> std::optional<Value> takeFrom(Guarded<std::optional<Value>> &next)
{
    return next.exchange(std::nullopt);
}

} // namespace

struct FakeRecognition::State {
    struct Seen {
        bool alive = true;
        bool started = false;
        bool cancelled = false;
        std::optional<SpeechSettings> settings;
        QByteArray audio;
        bool closed = false;
        std::function<void(const SpeechRecognitionResult &)> recognized;
        std::function<void(const CancellationDetails &)> canceled;
    };

    Guarded<Seen> seen;
    HandlerGate gate;

    template<typename Handler, typename Value>
    bool deliver(Delivery delivery, Handler Seen::*member, const Value &value, bool ends)
    {
        const Handler handler = seen.with([&](Seen &s) {
            if (!s.started)
                qFatal("FakeSpeechService: delivered to a recogniser that was not started.");
            if (s.cancelled)
                qFatal("FakeSpeechService: delivered to a recogniser that had been cancelled.");
            s.cancelled = ends;
            return s.*member;
        });
        return handler && vynlex::deliver(delivery, [&] { return gate.run([&] { handler(value); }); });
    }
};

struct FakeUtterance::State {
    using Outcome = tl::expected<SpeechSynthesisResult, QString>;

    QString text;
    SpeechSettings settings;
    std::function<void(const SpeechSynthesisResult &)> completed;
    std::shared_ptr<HandlerGate> gate;

    std::mutex mutex;
    std::condition_variable ended;
    bool claimed = false; ///< The outcome is decided, though its handler may still be running.
    bool stopped = false;
    std::optional<Outcome> outcome;

    bool claim()
    {
        const std::lock_guard lock(mutex);
        return !std::exchange(claimed, true);
    }

    void release(Outcome value)
    {
        const std::lock_guard lock(mutex);
        outcome = std::move(value);
        ended.notify_all();
    }

    bool complete(Delivery delivery)
    {
        if (!claim())
            return false;
        const SpeechSynthesisResult result{
            ResultReason::SynthesizingAudioCompleted, {}, std::chrono::milliseconds(60) * text.size()};
        // A synthesiser that goes in between hears nothing, and its text was not heard to its end.
        const bool heard = !completed || deliver(delivery, [&] { return gate->run([&] { completed(result); }); });
        release(heard
                    ? result
                    : SpeechSynthesisResult{ResultReason::Canceled, {CancellationReason::CancelledByUser, {}, {}}, {}});
        return true;
    }

    bool cancel(const CancellationDetails &details)
    {
        if (!claim())
            return false;
        release(SpeechSynthesisResult{ResultReason::Canceled, details, {}});
        return true;
    }

    void stop()
    {
        const std::lock_guard lock(mutex);
        if (std::exchange(claimed, true))
            return;
        stopped = true;
        outcome = SpeechSynthesisResult{
            ResultReason::Canceled, {CancellationReason::CancelledByUser, CancellationErrorCode::NoError, {}}, {}};
        ended.notify_all();
    }

    Outcome wait()
    {
        std::unique_lock lock(mutex);
        ended.wait(lock, [&] { return outcome.has_value(); });
        return *outcome;
    }
};

struct FakeSpeechService::State {
    struct Lists {
        std::vector<std::shared_ptr<FakeRecognition::State>> recognitions;
        std::vector<std::shared_ptr<FakeUtterance::State>> utterances;
        int synthesizers = 0;
        int stops = 0;
        Speaking speaking = Speaking::UntilTold;
    };

    Guarded<Lists> lists;
    Guarded<std::optional<QString>> recognizerFailure;
    Guarded<std::optional<QString>> startFailure;
    Guarded<std::optional<QString>> synthesizerFailure;
    Guarded<std::optional<QString>> speakFailure;
    Guarded<std::optional<CancellationDetails>> speakCancellation;
    Guarded<std::optional<QString>> stopFailure;
};

namespace {

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
        const auto speaking = service->lists.with([&](auto &lists) {
            lists.utterances.push_back(utterance);
            return lists.speaking;
        });

        if (const auto failure = takeFrom(service->speakFailure)) {
            if (utterance->claim())
                utterance->release(tl::unexpected(*failure));
        } else if (const auto cancellation = takeFrom(service->speakCancellation)) {
            utterance->cancel(*cancellation);
        } else if (speaking == FakeSpeechService::Speaking::CompletesAtOnce) {
            utterance->complete(Delivery::ServiceThread);
        } else if (MainQueue::isCurrent()) {
            qFatal("FakeSpeechService: speakText would block the main thread for ever.");
        }
        return utterance->wait();
    }

    tl::expected<void, QString> stopSpeaking() override
    {
        m_service->lists.with([](auto &lists) { ++lists.stops; });
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

} // namespace

FakeRecognition::FakeRecognition(std::shared_ptr<State> state)
    : m_state(std::move(state))
{
}

bool FakeRecognition::isAlive() const
{
    return m_state->seen.with([](auto &seen) { return seen.alive; });
}

bool FakeRecognition::isStarted() const
{
    return m_state->seen.with([](auto &seen) { return seen.started; });
}

std::optional<SpeechSettings> FakeRecognition::settingsAtStart() const
{
    return m_state->seen.with([](auto &seen) { return seen.settings; });
}

bool FakeRecognition::hasRecognizedHandler() const
{
    return m_state->seen.with([](auto &seen) { return static_cast<bool>(seen.recognized); });
}

bool FakeRecognition::hasCanceledHandler() const
{
    return m_state->seen.with([](auto &seen) { return static_cast<bool>(seen.canceled); });
}

QByteArray FakeRecognition::audio() const
{
    return m_state->seen.with([](auto &seen) { return seen.audio; });
}

bool FakeRecognition::isInputClosed() const
{
    return m_state->seen.with([](auto &seen) { return seen.closed; });
}

bool FakeRecognition::deliverRecognized(const SpeechRecognitionResult &result, Delivery delivery)
{
    return m_state->deliver(delivery, &State::Seen::recognized, result, false);
}

bool FakeRecognition::deliverRecognized(const QString &text, Ticks duration, Delivery delivery)
{
    return deliverRecognized({ResultReason::RecognizedSpeech, text, {}, duration}, delivery);
}

bool FakeRecognition::deliverCanceled(const CancellationDetails &details, Delivery delivery)
{
    return m_state->deliver(delivery, &State::Seen::canceled, details, true);
}

FakeUtterance::FakeUtterance(std::shared_ptr<State> state)
    : m_state(std::move(state))
{
}

QString FakeUtterance::text() const
{
    return m_state->text;
}

SpeechSettings FakeUtterance::settings() const
{
    return m_state->settings;
}

bool FakeUtterance::isSpeaking() const
{
    const std::lock_guard lock(m_state->mutex);
    return !m_state->outcome.has_value();
}

bool FakeUtterance::wasStopped() const
{
    const std::lock_guard lock(m_state->mutex);
    return m_state->stopped;
}

bool FakeUtterance::complete(Delivery delivery)
{
    return m_state->complete(delivery);
}

bool FakeUtterance::cancel(const CancellationDetails &details)
{
    return m_state->cancel(details);
}

bool FakeUtterance::fail(const QString &sentence)
{
    if (!m_state->claim())
        return false;
    m_state->release(tl::unexpected(sentence));
    return true;
}

FakeSpeechService::FakeSpeechService()
    : m_state(std::make_shared<State>())
{
}

FakeSpeechService::~FakeSpeechService() = default;

tl::expected<std::shared_ptr<SpeechRecognizer>, QString> FakeSpeechService::makeRecognizer(const SpeechConfig &config,
                                                                                           const AudioConfig &audio)
{
    if (const auto failure = takeFrom(m_state->recognizerFailure))
        return tl::unexpected(*failure);
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

int FakeSpeechService::recognitionCount() const
{
    return m_state->lists.with([](auto &lists) { return static_cast<int>(lists.recognitions.size()); });
}

FakeRecognition FakeSpeechService::recognition(int index) const
{
    return FakeRecognition(m_state->lists.with([&](auto &lists) {
        if (index < 0 || index >= static_cast<int>(lists.recognitions.size()))
            qFatal("FakeSpeechService: there is no recogniser %d.", index);
        return lists.recognitions[static_cast<std::size_t>(index)];
    }));
}

FakeRecognition FakeSpeechService::lastRecognition() const
{
    return recognition(recognitionCount() - 1);
}

int FakeSpeechService::synthesizerCount() const
{
    return m_state->lists.with([](auto &lists) { return lists.synthesizers; });
}

int FakeSpeechService::stopSpeakingCount() const
{
    return m_state->lists.with([](auto &lists) { return lists.stops; });
}

int FakeSpeechService::utteranceCount() const
{
    return m_state->lists.with([](auto &lists) { return static_cast<int>(lists.utterances.size()); });
}

FakeUtterance FakeSpeechService::utterance(int index) const
{
    return FakeUtterance(m_state->lists.with([&](auto &lists) {
        if (index < 0 || index >= static_cast<int>(lists.utterances.size()))
            qFatal("FakeSpeechService: there is no utterance %d.", index);
        return lists.utterances[static_cast<std::size_t>(index)];
    }));
}

FakeUtterance FakeSpeechService::lastUtterance() const
{
    return utterance(utteranceCount() - 1);
}

void FakeSpeechService::setSpeaking(Speaking speaking)
{
    m_state->lists.with([&](auto &lists) { lists.speaking = speaking; });
}

void FakeSpeechService::failNextRecognizer(const QString &sentence)
{
    m_state->recognizerFailure.set(sentence);
}

void FakeSpeechService::failNextStart(const QString &sentence)
{
    m_state->startFailure.set(sentence);
}

void FakeSpeechService::failNextSynthesizer(const QString &sentence)
{
    m_state->synthesizerFailure.set(sentence);
}

void FakeSpeechService::failNextSpeakText(const QString &sentence)
{
    m_state->speakFailure.set(sentence);
}

void FakeSpeechService::cancelNextSpeakText(const CancellationDetails &details)
{
    m_state->speakCancellation.set(details);
}

void FakeSpeechService::failNextStopSpeaking(const QString &sentence)
{
    m_state->stopFailure.set(sentence);
}

} // namespace vynlex

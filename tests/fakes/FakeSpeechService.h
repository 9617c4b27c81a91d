#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <condition_variable>
#include <memory>
#include <mutex>
#include <optional>
#include <tl/expected.hpp>
#include <vector>

#include "platform/dispatch/Guarded.h"
#include "platform/speech/HandlerGate.h"
#include "platform/speech/SpeechService.h"

namespace vynlex {

/// What a recogniser or synthesiser finds in its `SpeechConfig` when it starts work.
struct SpeechSettings {
    QString key;
    QString region;
    QString recognitionLanguage;
    QString voiceName;
    bool dictation = false;

    bool operator==(const SpeechSettings &) const = default;
};

/// One recogniser that was made, as the test sees it. A handle, good after the recogniser is gone. Any thread.
///
/// Handlers run on a thread that is not the test's, as the shipped service does it; delivering returns after them.
class FakeRecognition {
public:
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
    struct State {
        Guarded<Seen> seen;
        HandlerGate gate;
    };
    explicit FakeRecognition(std::shared_ptr<State> state)
        : m_state(std::move(state))
    {
    }

    [[nodiscard]] bool isAlive() const { return seen().alive; }     ///< The recogniser has not been destroyed.
    [[nodiscard]] bool isStarted() const { return seen().started; } ///< Stays true afterwards.
    [[nodiscard]] std::optional<SpeechSettings> settingsAtStart() const { return seen().settings; }
    [[nodiscard]] QByteArray audio() const { return seen().audio; } ///< What came through the stream since the start.
    [[nodiscard]] bool isInputClosed() const { return seen().closed; }

    /// False when no handler ran: there is none, or the recogniser is gone. Delivering to a recogniser that was never
    /// started, or that has been cancelled, ends the test program.
    bool deliverRecognized(const SpeechRecognitionResult &result);
    bool deliverRecognized(const QString &text, Ticks duration = std::chrono::seconds(1))
    {
        return deliverRecognized({ResultReason::RecognizedSpeech, text, {}, duration});
    }
    bool deliverCanceled(const CancellationDetails &details);

private:
    [[nodiscard]] Seen seen() const { return m_state->seen.copy(); }

    std::shared_ptr<State> m_state;
};

/// One text that was given to `speakText`. A handle, good after the synthesiser is gone. Any thread.
///
/// Ending it twice, or after it was stopped, does nothing and answers false.
class FakeUtterance {
public:
    struct State {
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

        bool claim();
        void release(Outcome value);
        bool complete();
        bool cancel(const CancellationDetails &details);
        void stop();
        Outcome wait();
    };
    explicit FakeUtterance(std::shared_ptr<State> state)
        : m_state(std::move(state))
    {
    }

    [[nodiscard]] QString text() const { return m_state->text; }
    [[nodiscard]] SpeechSettings settings() const { return m_state->settings; } ///< When speaking began.
    [[nodiscard]] bool isSpeaking() const ///< `speakText` has not been released yet.
    {
        const std::lock_guard lock(m_state->mutex);
        return !m_state->outcome.has_value();
    }
    [[nodiscard]] bool wasStopped() const ///< By `stopSpeaking` or by the synthesiser's end.
    {
        const std::lock_guard lock(m_state->mutex);
        return m_state->stopped;
    }

    bool complete() { return m_state->complete(); } ///< Runs `synthesisCompleted`, then releases `speakText`.
    /// `speakText` returns a Canceled result.
    bool cancel(const CancellationDetails &details) { return m_state->cancel(details); }

private:
    std::shared_ptr<State> m_state;
};

/// A speech service that the test plays: it records what it was asked for and answers when told.
///
/// `speakText` blocks until the test ends its utterance, or answers at once as told beforehand. Calling it on the main
/// thread without such an answer would never return, so it ends the test program. Any thread.
class FakeSpeechService final : public SpeechService {
public:
    tl::expected<std::shared_ptr<SpeechRecognizer>, QString> makeRecognizer(const SpeechConfig &config,
                                                                            const AudioConfig &audio) override;
    tl::expected<std::shared_ptr<SpeechSynthesizer>, QString> makeSynthesizer(const SpeechConfig &config) override;

    [[nodiscard]] int recognitionCount() const { return static_cast<int>(m_state->lists.copy().recognitions.size()); }
    [[nodiscard]] int synthesizerCount() const { return m_state->lists.copy().synthesizers; }
    [[nodiscard]] int utteranceCount() const { return static_cast<int>(m_state->lists.copy().utterances.size()); }
    [[nodiscard]] QStringList textsBeingSpoken() const; ///< Their `speakText` has not been released yet.
    /// Asking for one when there is none ends the test program.
    [[nodiscard]] FakeRecognition lastRecognition() const;
    [[nodiscard]] FakeUtterance lastUtterance() const;

    /// From now on `synthesisCompleted` runs as soon as `speakText` is called, which then returns.
    void completeSpeakingAtOnce()
    {
        m_state->lists.with([](auto &lists) { lists.completesAtOnce = true; });
    }

    /// Each counts once, for the next call of its kind.
    void failNextStart(const QString &sentence) { m_state->startFailure.set(sentence); }
    void failNextSynthesizer(const QString &sentence) { m_state->synthesizerFailure.set(sentence); }
    void failNextSpeakText(const QString &sentence) { m_state->speakFailure.set(sentence); }
    void cancelNextSpeakText(const CancellationDetails &details) { m_state->speakCancellation.set(details); }
    void failNextStopSpeaking(const QString &sentence) { m_state->stopFailure.set(sentence); }

    struct State {
        struct Lists {
            std::vector<std::shared_ptr<FakeRecognition::State>> recognitions;
            std::vector<std::shared_ptr<FakeUtterance::State>> utterances;
            int synthesizers = 0;
            bool completesAtOnce = false;
        };
        Guarded<Lists> lists;
        Guarded<std::optional<QString>> startFailure;
        Guarded<std::optional<QString>> synthesizerFailure;
        Guarded<std::optional<QString>> speakFailure;
        Guarded<std::optional<CancellationDetails>> speakCancellation;
        Guarded<std::optional<QString>> stopFailure;
    };

private:
    const std::shared_ptr<State> m_state = std::make_shared<State>();
};

} // namespace vynlex

#pragma once

#include <QByteArray>
#include <QString>

#include <memory>
#include <optional>
#include <tl/expected.hpp>
#include <vector>

#include "platform/speech/SpeechService.h"

namespace vynlex {

/// Where a handler runs when the test delivers something. Either way the call returns after the handler has.
enum class Delivery {
    ServiceThread, ///< On a thread that is not the test's, as the shipped service does it.
    Inline,        ///< On the calling thread.
};

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
class FakeRecognition {
public:
    struct State;
    explicit FakeRecognition(std::shared_ptr<State> state);

    [[nodiscard]] bool isAlive() const;   ///< The recogniser has not been destroyed.
    [[nodiscard]] bool isStarted() const; ///< Stays true afterwards.
    [[nodiscard]] std::optional<SpeechSettings> settingsAtStart() const;
    [[nodiscard]] bool hasRecognizedHandler() const; ///< At the start.
    [[nodiscard]] bool hasCanceledHandler() const;   ///< At the start.
    [[nodiscard]] QByteArray audio() const;          ///< What came through the stream since the start.
    [[nodiscard]] bool isInputClosed() const;

    /// False when no handler ran: there is none, or the recogniser is gone. Delivering to a recogniser that was never
    /// started, or that has been cancelled, ends the test program.
    bool deliverRecognized(const SpeechRecognitionResult &result, Delivery delivery = Delivery::ServiceThread);
    bool deliverRecognized(const QString &text, Ticks duration = std::chrono::seconds(1),
                           Delivery delivery = Delivery::ServiceThread);
    bool deliverCanceled(const CancellationDetails &details, Delivery delivery = Delivery::ServiceThread);

private:
    std::shared_ptr<State> m_state;
};

/// One text that was given to `speakText`. A handle, good after the synthesiser is gone. Any thread.
///
/// Ending it twice, or after it was stopped, does nothing and answers false.
class FakeUtterance {
public:
    struct State;
    explicit FakeUtterance(std::shared_ptr<State> state);

    [[nodiscard]] QString text() const;
    [[nodiscard]] SpeechSettings settings() const; ///< When speaking began.
    [[nodiscard]] bool isSpeaking() const;         ///< `speakText` has not been released yet.
    [[nodiscard]] bool wasStopped() const;         ///< By `stopSpeaking` or by the synthesiser's end.

    /// Runs `synthesisCompleted`, then releases `speakText`.
    bool complete(Delivery delivery = Delivery::ServiceThread);
    bool cancel(const CancellationDetails &details); ///< `speakText` returns a Canceled result.
    bool fail(const QString &sentence);              ///< `speakText` fails: the loudspeaker does not work.

private:
    std::shared_ptr<State> m_state;
};

/// A speech service that the test plays: it records what it was asked for and answers when told.
///
/// `speakText` blocks until the test ends its utterance, or answers at once as told beforehand. Calling it on the main
/// thread without such an answer would never return, so it ends the test program. Any thread.
class FakeSpeechService final : public SpeechService {
public:
    enum class Speaking {
        UntilTold,      ///< `speakText` blocks.
        CompletesAtOnce ///< `synthesisCompleted` runs on another thread, then `speakText` returns.
    };

    FakeSpeechService();
    ~FakeSpeechService() override;

    tl::expected<std::shared_ptr<SpeechRecognizer>, QString> makeRecognizer(const SpeechConfig &config,
                                                                            const AudioConfig &audio) override;
    tl::expected<std::shared_ptr<SpeechSynthesizer>, QString> makeSynthesizer(const SpeechConfig &config) override;

    /// In the order in which they were made. `recognition(0)` was the first; asking for one that does not exist ends
    /// the test program.
    [[nodiscard]] int recognitionCount() const;
    [[nodiscard]] FakeRecognition recognition(int index) const;
    [[nodiscard]] FakeRecognition lastRecognition() const;

    [[nodiscard]] int synthesizerCount() const;
    [[nodiscard]] int stopSpeakingCount() const;
    [[nodiscard]] int utteranceCount() const;
    [[nodiscard]] FakeUtterance utterance(int index) const;
    [[nodiscard]] FakeUtterance lastUtterance() const;

    /// Counts for every later `speakText`.
    void setSpeaking(Speaking speaking);

    /// Each counts once, for the next call of its kind.
    void failNextRecognizer(const QString &sentence);
    void failNextStart(const QString &sentence);
    void failNextSynthesizer(const QString &sentence);
    void failNextSpeakText(const QString &sentence);
    void cancelNextSpeakText(const CancellationDetails &details);
    void failNextStopSpeaking(const QString &sentence);

    struct State;

private:
    std::shared_ptr<State> m_state;
};

} // namespace vynlex

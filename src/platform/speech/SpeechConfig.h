#pragma once

#include <QString>

#include <memory>
#include <tl/expected.hpp>

namespace vynlex {

/// How to reach the speech service and in which language. A handle: copies share their settings, and a recogniser or
/// synthesiser reads them when it starts work, so a setting made after its creation still counts.
///
/// Any thread.
class SpeechConfig {
public:
    /// Fails when the key is empty, or `region` is not a host label (letters, digits, hyphens). Whether key and region
    /// are any good shows only when the service is asked.
    static tl::expected<SpeechConfig, QString> fromSubscription(const QString &key, const QString &region);

    void setSpeechRecognitionLanguage(const QString &locale); ///< "en-US" unless set
    void setSpeechSynthesisVoiceName(const QString &voiceName);
    void enableDictation();

    [[nodiscard]] QString subscriptionKey() const;
    [[nodiscard]] QString region() const;
    [[nodiscard]] QString speechRecognitionLanguage() const;
    [[nodiscard]] QString speechSynthesisVoiceName() const;
    [[nodiscard]] bool isDictationEnabled() const;

private:
    struct Settings;
    explicit SpeechConfig(std::shared_ptr<Settings> settings);
    std::shared_ptr<Settings> m_settings;
};

} // namespace vynlex

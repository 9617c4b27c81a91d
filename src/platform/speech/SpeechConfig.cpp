#include "platform/speech/SpeechConfig.h"

#include <QRegularExpression>

#include "platform/dispatch/Guarded.h"

namespace vynlex {
namespace {

struct Values {
    QString key;
    QString region;
    QString recognitionLanguage = QStringLiteral("en-US");
    QString synthesisVoiceName;
    bool dictation = false;
};

/// The region becomes the first label of a host name (RFC 1123: at most 63 characters, no hyphen at either end).
bool isHostLabel(const QString &text)
{
    static const QRegularExpression label(
        QRegularExpression::anchoredPattern(QStringLiteral("[A-Za-z0-9](?:[A-Za-z0-9-]{0,61}[A-Za-z0-9])?")));
    return label.match(text).hasMatch();
}

} // namespace

struct SpeechConfig::Settings {
    Guarded<Values> values;
};

SpeechConfig::SpeechConfig(std::shared_ptr<Settings> settings)
    : m_settings(std::move(settings))
{
}

tl::expected<SpeechConfig, QString> SpeechConfig::fromSubscription(const QString &key, const QString &region)
{
    if (key.isEmpty())
        return tl::unexpected(QStringLiteral("The speech subscription key is empty."));
    if (!isHostLabel(region))
        return tl::unexpected(
            QStringLiteral("The speech region must be a name of letters, digits and hyphens, such as \"westeurope\"."));
    auto settings = std::make_shared<Settings>();
    settings->values.with([&](Values &values) {
        values.key = key;
        values.region = region;
    });
    return SpeechConfig(std::move(settings));
}

void SpeechConfig::setSpeechRecognitionLanguage(const QString &locale)
{
    m_settings->values.with([&](Values &values) { values.recognitionLanguage = locale; });
}

void SpeechConfig::setSpeechSynthesisVoiceName(const QString &voiceName)
{
    m_settings->values.with([&](Values &values) { values.synthesisVoiceName = voiceName; });
}

void SpeechConfig::enableDictation()
{
    m_settings->values.with([](Values &values) { values.dictation = true; });
}

QString SpeechConfig::subscriptionKey() const
{
    return m_settings->values.copy().key;
}

QString SpeechConfig::region() const
{
    return m_settings->values.copy().region;
}

QString SpeechConfig::speechRecognitionLanguage() const
{
    return m_settings->values.copy().recognitionLanguage;
}

QString SpeechConfig::speechSynthesisVoiceName() const
{
    return m_settings->values.copy().synthesisVoiceName;
}

bool SpeechConfig::isDictationEnabled() const
{
    return m_settings->values.copy().dictation;
}

} // namespace vynlex

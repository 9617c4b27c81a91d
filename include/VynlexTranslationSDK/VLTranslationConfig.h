#pragma once

#include <VynlexTranslationSDK/VynlexExport.h>

#include <QString>

namespace vynlex {

/// The keys of the cloud services, as the host hands them in. A plain value.
///
/// Nothing is checked here: an empty or wrong key shows up when a service is asked. All three stay in memory only.
class VYNLEX_EXPORT VLTranslationConfig {
public:
    /// Any texts, empty ones too.
    VLTranslationConfig(QString speechKey, QString speechRegion, QString textTranslationKey);

    /// Subscription key of the speech service, for recognition and for speech output.
    [[nodiscard]] const QString &speechKey() const { return m_speechKey; }
    /// Region of the speech service ("centralindia"); also sent as the translator's region.
    [[nodiscard]] const QString &speechRegion() const { return m_speechRegion; }
    /// Subscription key of the text translator.
    [[nodiscard]] const QString &textTranslationKey() const { return m_textTranslationKey; }

    /// Whether all three texts are the same.
    bool operator==(const VLTranslationConfig &) const = default;

private:
    QString m_speechKey;
    QString m_speechRegion;
    QString m_textTranslationKey;
};

} // namespace vynlex

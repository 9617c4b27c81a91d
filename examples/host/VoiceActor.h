#pragma once

#include <VynlexTranslationSDK/VLTranslationConfig.h>

#include <QSet>
#include <QString>

#include <functional>
#include <string>
#include <tl/expected.hpp>

#include "Room.h"
#include "language/LanguageOption.h"
#include "sandbox/phrasebook/Phrasebook.h"

namespace host {

/// Says sentences of the phrasebook where nobody speaks: the speech service reads them into WAV files.
///
/// Main thread.
class VoiceActor {
public:
    /// Recordings go into `folder`, which must exist. `config` has the keys of the speech service.
    VoiceActor(Room &room, QString folder, vynlex::VLTranslationConfig config);

    [[nodiscard]] const sandbox::Phrasebook &phrasebook() const { return m_book; }
    [[nodiscard]] static QString sentence(const sandbox::Phrase &phrase, vynlex::LanguageOption language);
    /// Empty for a phrase that is not in the book.
    [[nodiscard]] QString sentence(const std::string &phraseId, vynlex::LanguageOption language) const;

    using Recorded = std::function<void(tl::expected<QString, QString>)>;

    /// Hands over the file of a sentence in a language, recorded first when it is not there yet; on the main queue. An
    /// error is one clear line. One at a time.
    void record(const std::string &phraseId, vynlex::LanguageOption language, Recorded recorded);
    /// The same, waited for.
    [[nodiscard]] tl::expected<QString, QString> recording(const std::string &phraseId,
                                                           vynlex::LanguageOption language);

private:
    [[nodiscard]] const sandbox::Phrase *phrase(const std::string &phraseId) const;

    Room &m_room;
    const QString m_folder;
    const vynlex::VLTranslationConfig m_config;
    sandbox::Phrasebook m_book;
    QSet<QString> m_files;
};

} // namespace host

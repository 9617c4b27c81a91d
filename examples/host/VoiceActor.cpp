#include "VoiceActor.h"

#include <QDir>

#include <algorithm>
#include <memory>
#include <optional>

#include "Waiting.h"
#include "platform/device/Platform.h"
#include "platform/dispatch/GlobalQueue.h"
#include "platform/dispatch/MainQueue.h"

using namespace Qt::StringLiterals;
using namespace vynlex;

namespace host {
namespace {

/// Blocks until the text has been spoken; an empty text is success.
QString speak(const SpeechConfig &config, const QString &text)
{
    const auto synthesizer = Platform::current()->speechService->makeSynthesizer(config);
    if (!synthesizer)
        return synthesizer.error();
    const auto result = (*synthesizer)->speakText(text);
    if (!result)
        return result.error();
    return result->reason == ResultReason::Canceled ? result->cancellation.errorDetails : QString();
}

} // namespace

VoiceActor::VoiceActor(Room &room, QString folder, VLTranslationConfig config)
    : m_room(room)
    , m_folder(std::move(folder))
    , m_config(std::move(config))
    , m_book(sandbox::Phrasebook::load(sandbox::Phrasebook::defaultFile()))
{
}

QString VoiceActor::sentence(const sandbox::Phrase &phrase, LanguageOption language)
{
    return QString::fromStdString(phrase.text.at(languageEntry(language).translatorCode.toStdString()));
}

QString VoiceActor::sentence(const std::string &phraseId, LanguageOption language) const
{
    const sandbox::Phrase *const found = phrase(phraseId);
    return found ? sentence(*found, language) : QString();
}

const sandbox::Phrase *VoiceActor::phrase(const std::string &phraseId) const
{
    const auto found = std::ranges::find(m_book.phrases(), phraseId, &sandbox::Phrase::id);
    return found == m_book.phrases().end() ? nullptr : &*found;
}

void VoiceActor::record(const std::string &phraseId, LanguageOption language, Recorded recorded)
{
    const LanguageEntry &entry = languageEntry(language);
    const QString file =
        QDir(m_folder).filePath(u"%1-%2.wav"_s.arg(entry.translatorCode, QString::fromStdString(phraseId)));
    const auto fail = [&](const QString &line) {
        MainQueue::async([recorded, line] { recorded(tl::unexpected(line)); });
    };
    if (m_files.contains(file)) {
        MainQueue::async([recorded, file] { recorded(file); });
        return;
    }
    if (!phrase(phraseId))
        return fail(u"The phrasebook has no sentence %1."_s.arg(QString::fromStdString(phraseId)));
    auto config = SpeechConfig::fromSubscription(m_config.speechKey(), m_config.speechRegion());
    if (!config)
        return fail(config.error());
    config->setSpeechSynthesisVoiceName(entry.synthesisVoice);

    m_room.record(file);
    GlobalQueue::async([this, config = *config, text = sentence(phraseId, language), file, recorded] {
        const QString problem = speak(config, text);
        MainQueue::async([this, text, file, recorded, problem] {
            if (!problem.isEmpty())
                return recorded(tl::unexpected(u"\"%1\" could not be recorded: %2"_s.arg(text, problem)));
            m_files.insert(file);
            recorded(file);
        });
    });
}

tl::expected<QString, QString> VoiceActor::recording(const std::string &phraseId, LanguageOption language)
{
    const auto outcome = std::make_shared<std::optional<tl::expected<QString, QString>>>();
    record(phraseId, language, [outcome](const tl::expected<QString, QString> &recorded) { *outcome = recorded; });
    if (!waitUntil([&] { return outcome->has_value(); }, std::chrono::minutes(5))) // the service client has limits
        return tl::unexpected(u"\"%1\" could not be recorded in time."_s.arg(sentence(phraseId, language)));
    return **outcome;
}

} // namespace host

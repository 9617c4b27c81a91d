#include "SayPanel.h"

#include <QTimer>

#include "conversation/ConversationTranslateVC.h"
#include "language/LanguageTranslation.h"
#include "platform/dispatch/Console.h"
#include "screens/ChatVC.h"

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using namespace vynlex;

namespace host {
namespace {

SayPanel::Ear listeningEar(const ViewController *screen)
{
    using Ear = SayPanel::Ear;
    if (const auto *const conversation = dynamic_cast<const ConversationTranslateVC *>(screen)) {
        if (conversation->speakerMicButton->isSelected())
            return Ear::Speaker;
        return conversation->listenerMicButton->isSelected() ? Ear::Listener : Ear::None;
    }
    const auto *const chat = dynamic_cast<const ChatVC *>(screen);
    return chat && chat->panelState() == ChatVC::PanelState::Recording ? Ear::VoiceMessage : Ear::None;
}

std::optional<LanguageOption> languageFor(SayPanel::Ear ear)
{
    if (ear == SayPanel::Ear::None)
        return std::nullopt;
    // Voice messages are in the speaker's language.
    return LanguageTranslation::shared().language(ear == SayPanel::Ear::Listener ? Side::Listener : Side::Speaker);
}

} // namespace

SayPanel::SayPanel(Stage &stage, Room &room, const QString &recordingsFolder)
    : m_stage(stage)
    , m_room(room)
    , m_actor(room, recordingsFolder, stage.user().config)
{
    // The kit tells its host nothing of its screens; looking five times a second is plenty for a panel.
    auto *const look = new QTimer(this);
    connect(look, &QTimer::timeout, this, &SayPanel::update);
    look->start(200ms);
}

QString SayPanel::hint() const
{
    switch (m_ear) {
    case Ear::Speaker:
        return tr("The person below says:");
    case Ear::Listener:
        return tr("The person opposite says:");
    case Ear::VoiceMessage:
        return tr("You say:");
    case Ear::None:
        break;
    }
    return tr("This device has no microphone. Press one on the phone, then choose what is said.");
}

void SayPanel::update()
{
    const Ear ear = listeningEar(m_stage.topScreen());
    const auto language = languageFor(ear);
    if (ear == m_ear && language == m_language)
        return;
    m_ear = ear;
    m_language = language;
    m_sentences.clear();
    if (language) {
        for (const sandbox::Phrase &phrase : m_actor.phrasebook().phrases())
            m_sentences.append(VoiceActor::sentence(phrase, *language));
    }
    emit sentencesChanged();
}

void SayPanel::say(int row)
{
    const auto &phrases = m_actor.phrasebook().phrases();
    if (!m_language || row < 0 || row >= static_cast<int>(phrases.size()))
        return;
    m_actor.record(phrases.at(static_cast<std::size_t>(row)).id, *m_language,
                   [this](const tl::expected<QString, QString> &recorded) {
                       const auto said = recorded.and_then(
                           [this](const QString &file) { return m_room.say(file).map([] { return QString(); }); });
                       if (!said)
                           consoleLine(said.error());
                   });
}

} // namespace host

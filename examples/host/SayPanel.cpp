#include "SayPanel.h"

#include <QTimer>

#include "conversation/ConversationTranslateVC.h"
#include "language/LanguageTranslation.h"
#include "platform/dispatch/Console.h"

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using namespace vynlex;

namespace host {
namespace {

std::optional<Side> listeningSide(const HostPage &page)
{
    const auto screen = std::dynamic_pointer_cast<ConversationTranslateVC>(page.presentedViewController());
    if (screen && screen->speakerMicButton->isSelected())
        return Side::Speaker;
    if (screen && screen->listenerMicButton->isSelected())
        return Side::Listener;
    return std::nullopt;
}

} // namespace

SayPanel::SayPanel(Stage &stage, Room &room, const QString &recordingsFolder)
    : m_stage(stage)
    , m_room(room)
    , m_actor(room, recordingsFolder)
{
    // The kit tells its host nothing of its screens; looking five times a second is plenty for a panel.
    auto *const look = new QTimer(this);
    connect(look, &QTimer::timeout, this, &SayPanel::update);
    look->start(200ms);
}

QString SayPanel::hint() const
{
    if (!m_side)
        return tr("This device has no microphone. Press a microphone on the phone, then choose what is said.");
    return *m_side == Side::Speaker ? tr("The person below says:") : tr("The person opposite says:");
}

void SayPanel::update()
{
    const auto side = listeningSide(m_stage.page());
    const auto language = side ? std::optional(LanguageTranslation::shared().language(*side)) : std::nullopt;
    if (side == m_side && language == m_language)
        return;
    m_side = side;
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

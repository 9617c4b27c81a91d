#include "ConversationPlayer.h"

#include <algorithm>

#include "HostPage.h"
#include "Waiting.h"
#include "conversation/LanguageSelectionView.h"
#include "language/LanguageTranslation.h"

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using namespace vynlex;

namespace host {
namespace {

using SideState = ConversationTranslateVC::SideState;

std::int64_t millisecondsSince(std::chrono::steady_clock::time_point start)
{
    return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - start).count();
}

tl::unexpected<QString> failure(const QString &what)
{
    return tl::unexpected(what);
}

} // namespace

/// One side of the screen, as the person there sees it.
struct ConversationPlayer::Half {
    ConversationTranslateVC &screen;
    Side side;

    [[nodiscard]] bool isSpeaker() const { return side == Side::Speaker; }
    [[nodiscard]] QString text() const { return (isSpeaker() ? screen.speakerLabel : screen.listenerLabel)->text(); }
    [[nodiscard]] SideState state() const { return isSpeaker() ? screen.speakerState() : screen.listenerState(); }
    [[nodiscard]] bool showsText() const
    {
        return !text().isEmpty() && !(isSpeaker() ? screen.speakerShowsPrompt() : screen.listenerShowsPrompt());
    }
    [[nodiscard]] const ButtonState &microphone() const
    {
        return *(isSpeaker() ? screen.speakerMicButton : screen.listenerMicButton);
    }
    [[nodiscard]] const ButtonState &readAloud() const
    {
        return *(isSpeaker() ? screen.speakerTextToSpeachButton : screen.listenerTextToSpeachButton);
    }
    void pressMicrophone() const
    {
        isSpeaker() ? screen.didPressSpeakerButtonAction() : screen.didPressListenerButtonAction();
    }
    void pressReadAloud() const
    {
        isSpeaker() ? screen.didPressSpeakerSideTextToSpeachButtonAction()
                    : screen.didPressListenerSideTextToSpeachButtonAction();
    }
    void tapLanguage() const
    {
        screen.didTapLanguageAction(isSpeaker() ? screen.speakerLanguageBackView : screen.listenerLanguageBackView);
    }
};

ConversationPlayer::ConversationPlayer(Stage &stage, Room &room, const QString &folder)
    : m_stage(stage)
    , m_room(room)
    , m_album(stage, folder)
{
}

ConversationPlayer::Half ConversationPlayer::half(Side side) const
{
    return {*m_screen, side};
}

void ConversationPlayer::openScreen()
{
    m_stage.page().didPressTranslateAction();
    m_screen = std::dynamic_pointer_cast<ConversationTranslateVC>(m_stage.page().presentedViewController());
    m_stage.settle();
}

void ConversationPlayer::closeScreen()
{
    m_screen->didPressBackButtonAction();
    m_screen.reset();
    m_stage.settle();
}

tl::expected<void, QString> ConversationPlayer::chooseLanguage(Side side, LanguageOption language)
{
    if (LanguageTranslation::shared().language(side) == language)
        return {};
    half(side).tapLanguage();
    LanguageSelectionView *const picker = m_screen->languageSelectionView();
    if (!picker)
        return failure(u"The language picker does not open."_s);
    const auto row = std::ranges::find(picker->languageOptions, language) - picker->languageOptions.begin();
    picker->didSelectRow(static_cast<int>(row));
    picker->didPressCloseButtonAction();
    if (!waitUntil([&] { return !m_screen->languageSelectionView(); }, 5s))
        return failure(u"The language picker does not close."_s);
    return {};
}

tl::expected<TurnRecord, QString> ConversationPlayer::playTurn(Side side, const QString &wavFile, const QString &name)
{
    const Half own = half(side);
    const Half other = half(otherSide(side));
    const auto &languages = LanguageTranslation::shared();
    TurnRecord turn{.side = side,
                    .from = languages.translatorCode(side),
                    .to = languages.translatorCode(otherSide(side)),
                    .recognised = {},
                    .translated = {},
                    .spoken = name + u".wav"_s,
                    .screenshot = name + u".png"_s};

    if (const auto said = m_room.say(wavFile); !said)
        return failure(said.error());
    own.pressMicrophone();
    const bool recognised = waitUntil([&] { return !own.microphone().isSelected(); }, serviceLimit);
    const auto recognisedAt = std::chrono::steady_clock::now();
    if (!recognised) {
        own.pressMicrophone();
        return failure(u"%1 (%2): the speech service gave no result for %3."_s.arg(name, turn.from, wavFile));
    }
    if (!own.showsText())
        return failure(u"%1 (%2): nothing was recognised in %3."_s.arg(name, turn.from, wavFile));
    turn.recognised = own.text();
    if (!waitUntil([&] { return other.showsText(); }, serviceLimit))
        return failure(u"%1 (%2 to %3): \"%4\" was not translated."_s.arg(name, turn.from, turn.to, turn.recognised));
    turn.translated = other.text();
    const auto translatedAt = std::chrono::steady_clock::now();

    // The recogniser may end the sentence a little before the recording does: what follows counts from the speech.
    const auto speechEnded = m_room.speechEnded().value_or(recognisedAt);
    turn.recognisedMs = std::chrono::duration_cast<std::chrono::milliseconds>(recognisedAt - speechEnded).count();
    turn.translatedMs = std::chrono::duration_cast<std::chrono::milliseconds>(translatedAt - speechEnded).count();

    m_album.settleAndTake(name);
    if (const auto taken = m_album.taken(); !taken)
        return failure(taken.error());

    m_room.record(m_album.path(turn.spoken));
    other.pressReadAloud();
    if (!waitUntil([&] { return !other.readAloud().isSelected(); }, serviceLimit)) {
        other.pressReadAloud();
        return failure(u"%1 (%2): \"%3\" was not read aloud."_s.arg(name, turn.to, turn.translated));
    }
    turn.spokenMs = millisecondsSince(speechEnded);
    return turn;
}

tl::expected<void, QString> ConversationPlayer::takePicturesOfEveryState(const QString &wavFile,
                                                                         const std::function<void()> &holdTranslation)
{
    const auto take = [&](const QString &name) { m_album.take(u"state-"_s + name); };
    const auto settleAndTake = [&](const QString &name) { m_album.settleAndTake(u"state-"_s + name); };
    const Half speaker = half(Side::Speaker);
    const Half listener = half(Side::Listener);

    settleAndTake(u"idle"_s);
    m_screen->didPressInfoButtonAction();
    settleAndTake(u"information"_s);
    m_screen->dismiss(Animated::Yes);
    m_stage.settle();
    speaker.tapLanguage();
    settleAndTake(u"picker-speaker"_s);
    m_screen->languageSelectionView()->didPressCloseButtonAction();
    waitUntil([&] { return !m_screen->languageSelectionView(); }, 5s);
    listener.tapLanguage();
    settleAndTake(u"picker-listener"_s);
    m_screen->languageSelectionView()->didPressCloseButtonAction();
    waitUntil([&] { return !m_screen->languageSelectionView(); }, 5s);
    listener.pressReadAloud();
    settleAndTake(u"alert"_s);
    m_screen->dismiss(Animated::Yes);
    m_stage.settle();

    for (const Half &side : {listener, speaker}) {
        const QString name = side.isSpeaker() ? u"speaker"_s : u"listener"_s;
        side.pressMicrophone();
        settleAndTake(u"listening-"_s + name);
        if (side.isSpeaker())
            break; // the speaker goes on and says something
        side.pressMicrophone();
        m_stage.settle();
    }
    if (holdTranslation)
        holdTranslation();
    if (const auto said = m_room.say(wavFile); !said)
        return failure(said.error());
    if (waitUntil([&] { return speaker.state() == SideState::Busy; }, serviceLimit)) {
        letPass(200ms); // the look has changed by then
        take(u"translating"_s);
    }
    if (!waitUntil([&] { return listener.showsText(); }, serviceLimit))
        return failure(u"Nothing was recognised or translated while the pictures were taken."_s);
    settleAndTake(u"translated"_s);
    m_room.setPlayback(Room::Speed::RealTime); // there is to be a moment for the picture
    for (const Half &side : {listener, speaker}) {
        m_room.record(m_album.path(u"state-speaking.wav"_s));
        side.pressReadAloud();
        if (waitUntil([&] { return side.state() == SideState::Speaking; }, 5s)) {
            letPass(150ms);
            take(u"speaking-"_s + (side.isSpeaker() ? u"speaker"_s : u"listener"_s));
        }
        waitUntil([&] { return !side.readAloud().isSelected(); }, serviceLimit);
    }
    m_room.setPlayback(m_room.speed());
    m_screen->didPressConversionButtonAction();
    settleAndTake(u"swapped"_s);
    m_screen->didPressConversionButtonAction();
    m_stage.settle();
    return m_album.taken().map([](const auto &) {});
}

} // namespace host

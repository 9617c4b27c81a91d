#include "ConversationPlayer.h"

#include "Sound.h"
#include "Waiting.h"
#include "conversation/ConversationTranslateVC.h"
#include "language/LanguageTranslation.h"

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using namespace vynlex;

namespace host {
namespace {

using SideState = ConversationTranslateVC::SideState;

tl::unexpected<QString> failure(const QString &what)
{
    return tl::unexpected(what);
}

} // namespace

/// One side of the screen, as the person there sees it.
struct ConversationPlayer::Half {
    const ConversationTranslateVC &screen;
    Hand &hand;
    Side side;

    [[nodiscard]] bool isSpeaker() const { return side == Side::Speaker; }
    [[nodiscard]] QString who() const { return isSpeaker() ? u"Speaker"_s : u"Listener"_s; }
    [[nodiscard]] QString text() const { return (isSpeaker() ? screen.speakerLabel : screen.listenerLabel)->text(); }
    [[nodiscard]] SideState state() const { return isSpeaker() ? screen.speakerState() : screen.listenerState(); }
    [[nodiscard]] bool showsText() const
    {
        return !text().isEmpty() && !(isSpeaker() ? screen.speakerShowsPrompt() : screen.listenerShowsPrompt());
    }
    [[nodiscard]] bool isListening() const
    {
        return (isSpeaker() ? screen.speakerMicButton : screen.listenerMicButton)->isSelected();
    }
    [[nodiscard]] bool isReadingAloud() const
    {
        return (isSpeaker() ? screen.speakerTextToSpeachButton : screen.listenerTextToSpeachButton)->isSelected();
    }
    void pressMicrophone() const { hand.press(u"Microphone, "_s + who()); }
    void stopListening() const { hand.press(u"Stop listening, "_s + who()); }
    void pressReadAloud() const { hand.press(u"Read aloud, "_s + who()); }
    void stopReadingAloud() const { hand.press(u"Stop reading aloud, "_s + who()); }
    void tapLanguage() const
    {
        const LabelState &label = *(isSpeaker() ? screen.speakerLanguageLabel : screen.listenerLanguageLabel);
        hand.press(u"%1 language: %2"_s.arg(who(), label.text()));
    }
};

ConversationPlayer::ConversationPlayer(Props &props)
    : m_stage(props.stage)
    , m_hand(props.hand)
    , m_room(props.room)
    , m_album(props.album)
    , m_picker(props)
{
}

ConversationPlayer::Half ConversationPlayer::half(Side side) const
{
    return {*m_stage.screen<ConversationTranslateVC>(), m_hand, side};
}

void ConversationPlayer::openPicker(Side side)
{
    half(side).tapLanguage();
    m_picker.awaitOpen();
}

tl::expected<void, QString> ConversationPlayer::chooseLanguage(Side side, LanguageOption language)
{
    if (LanguageTranslation::shared().language(side) == language)
        return {};
    openPicker(side);
    m_picker.choose(language);
    m_picker.close();
    return m_hand.outcome();
}

tl::expected<TurnRecord, QString> ConversationPlayer::playTurn(Side side, const QString &wavFile, const QString &name,
                                                               Pictures pictures)
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

    if (const auto heard = listen(own, wavFile, name, pictures); !heard)
        return failure(u"%1 (%2): %3"_s.arg(name, turn.from, heard.error()));
    const auto recognisedAt = std::chrono::steady_clock::now();
    if (!own.showsText())
        return failure(u"%1 (%2): nothing was recognised in %3."_s.arg(name, turn.from, wavFile));
    turn.recognised = own.text();
    if (pictures == Pictures::OfEveryState && waitUntil([&] { return own.state() == SideState::Busy; }, 5s)) {
        letPass(200ms); // the look has changed by then
        m_album.take(name + u"-translating"_s);
    }
    if (!waitUntil([&] { return other.showsText(); }, serviceLimit))
        return failure(u"%1 (%2 to %3): \"%4\" was not translated."_s.arg(name, turn.from, turn.to, turn.recognised));
    turn.translated = other.text();
    const auto translatedAt = std::chrono::steady_clock::now();

    // The recogniser may end the sentence a little before the recording does: what follows counts from the speech.
    const auto speechEnded = m_room.speechEnded().value_or(recognisedAt);
    const auto since = [&](std::chrono::steady_clock::time_point then) {
        return std::chrono::duration_cast<std::chrono::milliseconds>(then - speechEnded).count();
    };
    turn.recognisedMs = since(recognisedAt);
    turn.translatedMs = since(translatedAt);
    m_album.settleAndTake(name);

    if (const auto heard = readAloud(other, name, pictures); !heard)
        return failure(u"%1 (%2): \"%3\" was not read aloud: %4"_s.arg(name, turn.to, turn.translated, heard.error()));
    turn.spokenMs = since(std::chrono::steady_clock::now());
    return turn;
}

/// Until the service has an answer.
tl::expected<void, QString> ConversationPlayer::listen(const Half &half, const QString &wavFile, const QString &name,
                                                       Pictures pictures)
{
    if (pictures == Pictures::OfEveryState) {
        half.pressMicrophone();
        m_album.settleAndTake(name + u"-listening"_s);
    }
    if (const auto said = m_room.say(wavFile); !said)
        return failure(said.error());
    if (pictures == Pictures::OfTheResult)
        half.pressMicrophone();
    if (auto pressed = m_hand.outcome(); !pressed)
        return pressed;
    if (waitUntil([&] { return !half.isListening(); }, serviceLimit))
        return {};
    half.stopListening();
    return failure(u"the speech service gave no result for %1."_s.arg(wavFile));
}

tl::expected<void, QString> ConversationPlayer::readAloud(const Half &half, const QString &name, Pictures pictures)
{
    const QString file = m_album.path(name + u".wav"_s);
    m_room.record(file);
    if (pictures == Pictures::OfEveryState)
        m_room.setPlayback(Room::Speed::RealTime); // there is to be a moment for the picture
    half.pressReadAloud();
    if (pictures == Pictures::OfEveryState && waitUntil([&] { return half.state() == SideState::Speaking; }, 5s)) {
        letPass(150ms);
        m_album.take(name + u"-speaking"_s);
    }
    const bool ended = waitUntil([&] { return !half.isReadingAloud(); }, serviceLimit);
    m_room.setPlayback(m_room.speed());
    if (!ended) {
        half.stopReadingAloud();
        return failure(u"it does not end."_s);
    }
    return m_hand.outcome().and_then([&] { return listenTo(file); }).and_then(expectSpeech);
}

tl::expected<void, QString> ConversationPlayer::playMisunderstanding(Side side, const QString &wavFile)
{
    const Half own = half(side);
    if (auto heard = listen(own, wavFile, {}, Pictures::OfTheResult); !heard)
        return heard;
    m_stage.settle();
    if (own.showsText())
        return failure(u"\"%1\" was understood where nothing was to be."_s.arg(own.text()));
    return {};
}

} // namespace host

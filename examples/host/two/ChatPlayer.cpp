#include "two/ChatPlayer.h"

#include <algorithm>
#include <functional>

#include "BackendAnswer.h"
#include "Sound.h"
#include "chat/ChatViewModel.h"
#include "chat/SocketManager.h"
#include "language/LanguageTranslation.h"

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using namespace vynlex;

namespace host {
namespace {

constexpr int severalMessages = 8; // notches of the wheel

tl::unexpected<QString> failure(const QString &what)
{
    return tl::unexpected(what);
}

} // namespace

struct ChatPlayer::Saying {
    QString words;
    QString wavFile;
};

ChatPlayer::ChatPlayer(const Person &person, Props &props)
    : m_person(person)
    , m_stage(props.stage)
    , m_hand(props.hand)
    , m_room(props.room)
    , m_device(props.device)
    , m_album(props.album)
    , m_actor(props.actor)
    , m_home(props)
{
}

tl::expected<void, QString> ChatPlayer::open(const Person &partner, Past past)
{
    if (auto there = m_hand.outcome(); !there)
        return there;
    m_home.openChat(partner.user.name);
    if (m_hand.isAtWork())
        noteArrivals(); // the session of the last visit
    if (past == Past::Nothing)
        m_hand.await(u"Press Voice Chat to record a message."_s, QAccessible::StaticText);
    m_hand.await(u"The chat's messages"_s, [past] {
        const ChatViewModel &model = ChatViewModel::shared();
        return model.isThreadKnown() && model.aryMessages.empty() == (past == Past::Nothing);
    });
    m_stage.settle();
    return m_hand.outcome();
}

void ChatPlayer::noteArrivals()
{
    VLWebSocketManager &session = *SocketManager::shared().webSocketManager;
    session.onNewChatMessage = [arrivals = m_arrivals,
                                handOn = session.onNewChatMessage](const VLChatMessage &message) {
        arrivals->emplace(message.id, momentUs());
        handOn(message);
    };
}

// --- The screen

ChatVC *ChatPlayer::screen() const
{
    return m_stage.screen<ChatVC>();
}

QVariant ChatPlayer::cell(int row, const char *role) const
{
    const QAbstractItemModel &table = *screen()->chatTableView();
    return table.data(table.index(row, 0), table.roleNames().key(role));
}

void ChatPlayer::lookBack()
{
    m_hand.scroll(-severalMessages);
}

// --- Saying something

tl::expected<SaidAnswer, QString> ChatPlayer::say(const SayRequest &request)
{
    const auto saying = whatToSay(request);
    if (!saying)
        return failure(saying.error());
    if (request.everyState)
        m_album.settleAndTake(pictureName(request.name, "idle"));
    const auto recognised = record(*saying, request);
    if (!recognised)
        return failure(recognised.error());
    if (request.everyState) {
        m_album.settleAndTake(pictureName(request.name, "stopped"));
        if (const auto heard = preview(request.name); !heard)
            return failure(heard.error());
    }

    const ChatViewModel &model = ChatViewModel::shared();
    const std::size_t before = model.aryMessages.size();
    SaidAnswer answer{
        .said = saying->words, .recognised = *recognised, .messageId = {}, .sentAtUs = momentUs(), .pictures = {}};
    if (holdSending)
        holdSending();
    m_hand.press(u"Send the message"_s);
    if (holdSending) {
        m_hand.await(u"Being sent"_s, QAccessible::Button);
        m_album.settleAndTake(pictureName(request.name, "sending"));
    }
    if (const auto pressed = m_hand.outcome(); !pressed)
        return failure(pressed.error());
    if (!waitUntil([&] { return screen()->panelState() == ChatVC::PanelState::Idle; }, serviceLimit))
        return failure(u"sending \"%1\" does not end."_s.arg(*recognised));
    if (model.aryMessages.size() == before)
        return failure(u"\"%1\" was not sent."_s.arg(*recognised));
    answer.messageId = model.aryMessages.back().id;
    m_album.settleAndTake(pictureName(request.name, "sent"));

    auto pictures = m_album.taken();
    if (!pictures)
        return failure(pictures.error());
    answer.pictures = *std::move(pictures);
    return answer;
}

tl::expected<ChatPlayer::Saying, QString> ChatPlayer::whatToSay(const SayRequest &request)
{
    const auto language = std::ranges::find(allLanguageOptions, request.language,
                                            [](LanguageOption option) { return languageEntry(option).translatorCode; });
    if (language == allLanguageOptions.end())
        return failure(u"there is no language \"%1\"."_s.arg(request.language));
    LanguageTranslation::shared().store(Side::Speaker, *language);
    if (!request.wavFile.isEmpty())
        return Saying{request.wavFile, request.wavFile};
    const std::string id = request.phrase.toStdString();
    return m_actor.recording(id, *language).map([&](const QString &file) {
        return Saying{m_actor.sentence(id, *language), file};
    });
}

/// Gives what was recognised.
tl::expected<QString, QString> ChatPlayer::record(const Saying &saying, const SayRequest &request)
{
    const ChatVC &chat = *screen();
    m_hand.press(u"Voice Chat"_s);
    m_hand.await(u"Stop recording"_s, QAccessible::Button);
    if (request.everyState) {
        letPass(2200ms); // so that the clock shows something
        m_album.take(pictureName(request.name, "recording"));
    }
    if (const auto said = m_room.say(saying.wavFile); !said)
        return failure(said.error());
    const auto length = listenTo(saying.wavFile).value_or(SoundFacts()).duration;
    if (!waitUntil([&] { return m_room.speechEnded().has_value(); }, length + serviceLimit))
        return failure(u"the microphone does not take %1."_s.arg(saying.wavFile));
    letPass(300ms); // no finger is faster
    m_hand.press(u"Stop recording"_s);
    if (const auto pressed = m_hand.outcome(); !pressed)
        return failure(pressed.error());

    if (!waitUntil([&] { return !chat.messageToSend().isEmpty(); }, serviceLimit))
        return failure(u"nothing was recognised in \"%1\" (%2)."_s.arg(saying.words, request.language));
    // A long recording comes in several pieces.
    QString recognised;
    while (std::exchange(recognised, chat.messageToSend()) != chat.messageToSend())
        letPass(1s);
    return recognised;
}

tl::expected<void, QString> ChatPlayer::preview(const QString &name)
{
    const ChatVC &chat = *screen();
    const QString file = m_album.path(u"%1-%2-preview.wav"_s.arg(name, m_person.word));
    m_room.setPlayback(Room::Speed::RealTime); // there is to be a moment for the picture
    m_room.record(file);
    m_hand.press(u"Play the recording"_s);
    letPass(700ms);
    m_album.take(pictureName(name, "previewing"));
    const bool ended = waitUntil([&] { return !chat.audioPlayButton->isSelected(); }, serviceLimit);
    m_room.setPlayback(m_room.speed());
    if (!ended)
        return failure(u"the preview does not end."_s);
    return m_hand.outcome()
        .and_then([&] { return listenTo(file); })
        .and_then(expectSpeech)
        .map_error([](const QString &what) { return "the preview: "_L1 + what; });
}

// --- Hearing something

tl::expected<HeardAnswer, QString> ChatPlayer::hear(const HearRequest &request)
{
    if (!waitUntil([&] { return m_arrivals->contains(request.messageId); }, serviceLimit))
        return failure(u"the message does not come over the socket."_s);
    const auto &messages = ChatViewModel::shared().aryMessages;
    const auto message = std::ranges::find(messages, request.messageId, &VLChatMessage::id);
    if (message == messages.end())
        return failure(u"the message came, but is not among those of the chat."_s);
    const int row = static_cast<int>(message - messages.begin());
    HeardAnswer answer;
    answer.receivedAtUs = m_arrivals->at(request.messageId);
    answer.received = message->messageText;
    answer.wavFile = u"%1-%2-heard.wav"_s.arg(request.name, m_person.word);
    if (!waitUntil([&] { return screen()->chatTableView()->rowCount() > row; }, serviceLimit) ||
        !cell(row, "incoming").toBool())
        return failure(u"the message is not shown as one of the other person."_s);

    if (const QString offer = u"New message, show it"_s; request.everyState && m_hand.sees(offer)) {
        m_album.settleAndTake(pictureName(request.name, "arrived-below"));
        m_hand.press(offer);
    }
    m_album.settleAndTake(pictureName(request.name, "received"));
    if (const auto played = play(row, request, m_album.path(answer.wavFile)); !played)
        return failure(played.error());
    answer.voice = m_device.lastVoice();
    const auto sound = listenTo(m_album.path(answer.wavFile));
    if (!sound)
        return failure(sound.error());
    if (const auto audible = expectSpeech(*sound); !audible)
        return failure(audible.error());
    answer.durationMs = sound->duration.count();
    answer.levelDb = sound->levelDb;

    const auto stored = storedText(VLApiManager::shared(), ChatViewModel::shared().threadID, request.messageId);
    if (!stored)
        return failure(stored.error());
    answer.stored = *stored;
    auto pictures = m_album.taken();
    if (!pictures)
        return failure(pictures.error());
    answer.pictures = *std::move(pictures);
    return answer;
}

tl::expected<void, QString> ChatPlayer::play(int row, const HearRequest &request, const QString &wavFile)
{
    m_room.record(wavFile);
    if (request.everyState)
        m_room.setPlayback(Room::Speed::RealTime);
    m_hand.press(u"Play, %1, %2"_s.arg(cell(row, "name").toString(), cell(row, "time").toString()));
    if (request.everyState) {
        letPass(700ms);
        m_album.take(pictureName(request.name, "playing"));
    }
    const bool ended = waitUntil([&] { return !cell(row, "playing").toBool(); }, serviceLimit);
    m_room.setPlayback(m_room.speed());
    if (!ended)
        return failure(u"playing the message does not end."_s);
    return m_hand.outcome();
}

QString ChatPlayer::pictureName(const QString &name, const char *state) const
{
    return u"%1-%2-%3"_s.arg(name, m_person.word, QLatin1StringView(state));
}

} // namespace host

#include "two/ChatPlayer.h"

#include <algorithm>
#include <functional>

#include "Sound.h"
#include "Waiting.h"
#include "api/JwtUserId.h"
#include "api/VLApiManager.h"
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

/// What the backend answers to a call, waited for.
template<typename Answer>
tl::expected<Answer, QString> answerTo(const std::function<void(VLApiCompletion<Answer>)> &call)
{
    struct Outcome {
        bool isKnown = false;
        tl::expected<Answer, QString> answer = failure(u"the backend does not answer."_s);
    };
    // Shared, because the answer may come after we have gone.
    const auto outcome = std::make_shared<Outcome>();
    call([outcome](const VLApiResult<Answer> &answer) {
        outcome->isKnown = true;
        if (answer)
            outcome->answer = *answer;
        else
            outcome->answer = failure(answer.error().errorMessage().trimmed());
    });
    waitUntil([&] { return outcome->isKnown; }, serviceLimit);
    return outcome->answer;
}

} // namespace

struct ChatPlayer::Saying {
    QString words;
    QString wavFile;
};

ChatPlayer::ChatPlayer(const Person &person, Stage &stage, Room &room, const Device &device, const QString &folder)
    : m_person(person)
    , m_stage(stage)
    , m_room(room)
    , m_device(device)
    , m_album(stage, folder)
    , m_actor(room, m_album.path(u"recordings-"_s + person.word))
{
}

ChatPlayer::~ChatPlayer()
{
    SocketManager::shared().webSocketManager.reset(); // which hands messages to us
}

// --- Signing in

tl::expected<void, QString> ChatPlayer::open()
{
    return signIn().and_then([this] { return connectSocket(); }).and_then([this]() -> tl::expected<void, QString> {
        m_stage.page().setChatPartner(otherThan(m_person).user);
        m_stage.page().didPressChatAction();
        const ChatViewModel &model = ChatViewModel::shared();
        // These two have messages.
        if (!waitUntil([&] { return model.isThreadKnown() && !model.aryMessages.empty(); }, serviceLimit))
            return failure(u"the chat's messages do not come."_s);
        m_stage.settle();
        return {};
    });
}

tl::expected<void, QString> ChatPlayer::signIn()
{
    VLApiManager &api = VLApiManager::shared();
    const auto token = answerTo<VLTokenResponse>([&](VLApiCompletion<VLTokenResponse> completion) {
        api.getJWToken(m_person.webToken(), std::move(completion));
    });
    if (!token || !token->jwt)
        return failure(u"no sign-in: %1"_s.arg(token ? u"the answer holds no token."_s : token.error()));
    api.setCredentials(userIdOfJwt(*token->jwt), *token->jwt);
    return {};
}

tl::expected<void, QString> ChatPlayer::connectSocket()
{
    const VLApiManager &api = VLApiManager::shared();
    SocketManager &holder = SocketManager::shared();
    holder.webSocketManager = std::make_unique<VLWebSocketManager>(api.currentEnv, api.currentJWT);
    holder.start();
    VLWebSocketManager &session = *holder.webSocketManager;
    session.onNewChatMessage = [this, handOn = session.onNewChatMessage](const VLChatMessage &message) {
        m_arrivals.emplace(message.id, momentUs());
        handOn(message);
    };
    if (!waitUntil([&] { return session.isSocketConnected; }, serviceLimit))
        return failure(u"the backend's socket cannot be reached."_s);
    return {};
}

// --- The screen

ChatVC *ChatPlayer::screen() const
{
    return dynamic_cast<ChatVC *>(&m_stage.topScreen());
}

QVariant ChatPlayer::cell(int row, const char *role) const
{
    const QAbstractItemModel &table = *screen()->chatTableView();
    return table.data(table.index(row, 0), table.roleNames().key(role));
}

void ChatPlayer::lookBack()
{
    m_stage.scroll(-severalMessages);
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
    screen()->stopRecordingORsendMessageAction();
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
    ChatVC &chat = *screen();
    chat.voiceChatAction();
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
    chat.stopRecordingORsendMessageAction();

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
    ChatVC &chat = *screen();
    const QString file = m_album.path(u"%1-%2-preview.wav"_s.arg(name, m_person.word));
    m_room.setPlayback(Room::Speed::RealTime); // there is to be a moment for the picture
    m_room.record(file);
    chat.audioPlayButtonAction();
    letPass(700ms);
    m_album.take(pictureName(name, "previewing"));
    const bool ended = waitUntil([&] { return !chat.audioPlayButton->isSelected(); }, serviceLimit);
    m_room.setPlayback(m_room.speed());
    if (!ended)
        return failure(u"the preview does not end."_s);
    return listenTo(file).and_then([&](const SoundFacts &sound) -> tl::expected<void, QString> {
        if (!sound.isSpeech())
            return failure(u"the preview is silent (%1)."_s.arg(file));
        return {};
    });
}

// --- Hearing something

tl::expected<HeardAnswer, QString> ChatPlayer::hear(const HearRequest &request)
{
    if (!waitUntil([&] { return m_arrivals.contains(request.messageId); }, serviceLimit))
        return failure(u"the message does not come over the socket."_s);
    const auto &messages = ChatViewModel::shared().aryMessages;
    const auto message = std::ranges::find(messages, request.messageId, &VLChatMessage::id);
    if (message == messages.end())
        return failure(u"the message came, but is not among those of the chat."_s);
    const int row = static_cast<int>(message - messages.begin());
    HeardAnswer answer;
    answer.receivedAtUs = m_arrivals.at(request.messageId);
    answer.received = message->messageText;
    answer.wavFile = u"%1-%2-heard.wav"_s.arg(request.name, m_person.word);
    if (!waitUntil([&] { return screen()->chatTableView()->rowCount() > row; }, serviceLimit) ||
        !cell(row, "incoming").toBool())
        return failure(u"the message is not shown as one of the other person."_s);

    if (request.everyState) {
        m_album.settleAndTake(pictureName(request.name, "arrived-below"));
        m_stage.scroll(2 * severalMessages);
    }
    m_album.settleAndTake(pictureName(request.name, "received"));
    if (const auto played = play(row, request, m_album.path(answer.wavFile)); !played)
        return failure(played.error());
    answer.voice = m_device.lastVoice();
    const auto sound = listenTo(m_album.path(answer.wavFile));
    if (!sound)
        return failure(sound.error());
    if (!sound->isSpeech())
        return failure(u"what was played is silent (%1)."_s.arg(answer.wavFile));
    answer.durationMs = sound->duration.count();
    answer.levelDb = sound->levelDb;

    const auto stored = storedText(request.messageId);
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
    screen()->didPressPlayButton(row);
    if (request.everyState) {
        letPass(700ms);
        m_album.take(pictureName(request.name, "playing"));
    }
    const bool ended = waitUntil([&] { return !cell(row, "playing").toBool(); }, serviceLimit);
    m_room.setPlayback(m_room.speed());
    if (!ended)
        return failure(u"playing the message does not end."_s);
    return {};
}

tl::expected<QString, QString> ChatPlayer::storedText(const QString &messageId) const
{
    const auto page = answerTo<VLThreadChatMessages>([](VLApiCompletion<VLThreadChatMessages> completion) {
        VLApiManager::shared().getChatMessages(ChatViewModel::shared().threadID, std::move(completion));
    });
    if (!page)
        return failure(page.error());
    const auto messages = page->messages.value_or(std::vector<VLChatMessage>());
    const auto message = std::ranges::find(messages, messageId, &VLChatMessage::id);
    if (message == messages.end())
        return failure(u"the backend has no message %1."_s.arg(messageId));
    return message->messageText;
}

QString ChatPlayer::pictureName(const QString &name, const char *state) const
{
    return u"%1-%2-%3"_s.arg(name, m_person.word, QLatin1StringView(state));
}

} // namespace host

#include "Tour.h"

#include <QDir>
#include <QElapsedTimer>
#include <QTextStream>

#include <array>
#include <vector>

#include "ConsoleLog.h"
#include "ConversationPlayer.h"
#include "HomePlayer.h"
#include "OtherPerson.h"
#include "PickerPlayer.h"
#include "TourPage.h"
#include "Transcript.h"
#include "TurnsRun.h"
#include "conversation/ConversationTranslateVC.h"
#include "language/LanguageTranslation.h"
#include "screens/HomeVC.h"
#include "two/ChatPlayer.h"

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using namespace vynlex;

namespace host {
namespace {

constexpr auto notSignedUp = "Plumber Ramesh"_L1; ///< Of the contacts; no user of the service.
constexpr auto saidInChat = "meet.canhear";
constexpr auto answeredInChat = "meet.hearclear";

/// What the backend says of the contacts when it names the user too.
QByteArray contactsWithOneself()
{
    const User &asha = people().front().user;
    return u"{\"contacts\":[{\"id\":\"%1\",\"name\":\"%2\",\"phoneNo\":\"%3\"}]}"_s
        .arg(asha.id, asha.name, asha.phoneNumber)
        .toUtf8();
}

class Tour {
public:
    Tour(const Options &options, Stage &stage, Room &room, const Device &device,
         const examples::SandboxProcess &sandbox)
        : m_options(options)
        , m_sandbox(sandbox)
        , m_folder(QDir().absoluteFilePath(options.outputFolder))
        , m_props(stage, room, device, m_folder.path(), u"recordings"_s)
        , m_hand(m_props.hand)
        , m_album(m_props.album)
        , m_home(m_props)
        , m_picker(m_props)
        , m_conversation(m_props)
        , m_chat(people().front(), m_props)
    {
    }

    tl::expected<void, QString> play();

private:
    struct Step {
        const char *chapter;
        const char *title;
        const char *told;
        void (Tour::*act)();
    };
    static const std::vector<Step> &story();
    tl::expected<void, QString> play(const Step &step);

    void seeHostPage() { m_album.settleAndTake(u"host-page"_s); }

    // --- Home
    void openKit()
    {
        m_hand.note(m_sandbox.delayNext(u"/api/calls"_s, 2s));
        m_hand.press(u"Open VynTranslate"_s);
        m_hand.await(u"Loading"_s, QAccessible::ProgressBar);
        m_album.settleAndTake(u"home-loading"_s);
    }
    void seeRecents()
    {
        m_home.awaitHome();
        m_album.take(u"home-recents"_s);
    }
    void meetFailingBackend()
    {
        m_hand.note(m_sandbox.answerNext(u"/api/contacts/*"_s, 503));
        m_hand.press(u"Contacts"_s, QAccessible::PageTab);
        letPass(500ms); // the answer changes nothing that could be waited for
        if (!m_hand.isAtWork())
            return;
        m_hand.press("Voice, "_L1 + nameInFirstRow());
        seeAlert(u"home-backend-failed"_s);
    }
    void seeContacts()
    {
        m_home.openContacts();
        m_album.take(u"home-contacts"_s);
    }
    void search()
    {
        m_home.searchFor(u"an"_s);
        m_album.take(u"home-search"_s);
    }
    void searchInVain()
    {
        m_home.searchFor(u"xyz"_s);
        m_hand.await(u"Nobody found for “xyz”"_s, QAccessible::StaticText);
        m_album.settleAndTake(u"home-nobody-found"_s);
    }
    void leaveSearch()
    {
        m_hand.press(Qt::Key_Escape); // the text
        m_hand.press(Qt::Key_Escape); // the keyboard
        m_album.settleAndTake(u"home-search-left"_s);
    }
    void callNonUser()
    {
        m_home.searchFor(notSignedUp);
        m_hand.press("Call, "_L1 + notSignedUp);
        seeAlert(u"home-not-signed-up"_s);
    }
    void callOneself()
    {
        m_hand.note(m_sandbox.answerNext(u"/api/contacts/*"_s, 200, contactsWithOneself()));
        m_home.openContacts();
        m_home.searchFor(people().front().user.name);
        m_hand.press("Voice, "_L1 + people().front().user.name);
        seeAlert(u"home-self"_s);
        m_home.clearSearch();
    }
    void chooseLanguage()
    {
        m_hand.press(u"Choose your language"_s);
        m_picker.awaitOpen();
        if (m_options.speaker)
            m_picker.choose(*m_options.speaker);
        m_album.settleAndTake(u"home-picker"_s);
        m_picker.close();
    }

    // --- Conversation
    void openConversation()
    {
        m_home.openConversation();
        m_album.take(u"conversation-idle"_s);
    }
    void readInformation()
    {
        m_hand.press(u"How it works"_s);
        m_hand.await(u"How it works"_s, QAccessible::Heading);
        m_album.settleAndTake(u"conversation-information"_s);
        m_hand.press(u"Close"_s);
    }
    void chooseBothLanguages()
    {
        m_hand.await(u"Swap the languages"_s, QAccessible::Button);
        for (const auto &[side, name] :
             {std::pair{Side::Listener, u"listener"_s}, std::pair{Side::Speaker, u"speaker"_s}}) {
            if (!m_hand.isAtWork())
                return;
            m_conversation.openPicker(side);
            if (side == Side::Listener && m_options.listener)
                m_picker.choose(*m_options.listener);
            m_album.settleAndTake(u"conversation-picker-"_s + name);
            m_picker.close();
        }
    }
    void speakerSpeaks() { playTurn(ConversationPlayer::Pictures::OfEveryState); }
    void listenerAnswers() { playTurn(ConversationPlayer::Pictures::OfEveryState); }
    void goOnTalking()
    {
        playTurn(ConversationPlayer::Pictures::OfTheResult);
        playTurn(ConversationPlayer::Pictures::OfTheResult);
    }
    void playTurn(ConversationPlayer::Pictures pictures);
    void speakUnintelligibly();
    void swapLanguages()
    {
        m_hand.press(u"Swap the languages"_s);
        m_album.settleAndTake(u"conversation-swapped"_s);
        m_hand.press(u"Swap the languages"_s);
        m_hand.press(u"Back"_s);
    }

    // --- Chat
    void openEmptyChat()
    {
        m_hand.note(m_chat.open(newcomer(), ChatPlayer::Past::Nothing));
        m_album.settleAndTake(u"chat-empty"_s);
    }
    void sendMessage();
    void hearAnswer()
    {
        hear(newcomer(), u"answer"_s);
        m_hand.press(u"Back"_s);
    }
    void openLongChat()
    {
        m_hand.note(m_chat.open(people().back(), ChatPlayer::Past::Messages));
        m_album.settleAndTake(u"chat-long"_s);
    }
    void hearMessageWhileReading()
    {
        if (m_hand.isAtWork())
            m_chat.lookBack();
        hear(people().back(), u"long"_s);
    }
    void hear(const Person &writer, const QString &name);

    // --- Out
    void comeHome()
    {
        m_hand.press(u"Back"_s);
        m_home.openRecents();
        m_album.take(u"home-again"_s);
    }
    void leaveKit()
    {
        m_home.leaveKit();
        m_album.take(u"host-again"_s);
    }
    void visitAgain()
    {
        m_home.openKit();
        m_album.take(u"home-second-visit"_s);
        m_home.leaveKit();
    }

    [[nodiscard]] QString nameInFirstRow() const
    {
        QAbstractItemModel &table = *m_props.stage.screen<HomeVC>()->tableView();
        return table.data(table.index(0, 0), table.roleNames().key("name")).toString().trimmed();
    }
    void seeAlert(const QString &picture)
    {
        m_hand.await(u"Ok"_s, QAccessible::Button);
        m_album.settleAndTake(picture);
        m_hand.press(u"Ok"_s);
    }
    /// Waited for; empty, and noted, when it cannot be made.
    [[nodiscard]] QString recordingOf(const char *phrase, LanguageOption language)
    {
        const auto file = m_props.actor.recording(phrase, language);
        m_hand.note(file.map([](const QString &) {}));
        return file.value_or(QString());
    }
    void addWords(const QString &what, const QString &words) { m_moment.words.emplace_back(what, words); }
    void addSound(const QString &caption, const QString &file)
    {
        const auto facts = listenTo(m_album.path(file));
        m_hand.note(facts.and_then(expectSpeech));
        m_moment.sounds.push_back({caption, file, facts.value_or(SoundFacts())});
    }

    const Options &m_options;
    const examples::SandboxProcess &m_sandbox;
    const QDir m_folder;
    Props m_props;
    Hand &m_hand;
    Album &m_album;
    HomePlayer m_home;
    PickerPlayer m_picker;
    ConversationPlayer m_conversation;
    ChatPlayer m_chat;

    TourMoment m_moment; ///< The current step's.
    std::vector<TurnRecord> m_turns;
};

const std::vector<Tour::Step> &Tour::story()
{
    static const std::vector<Step> story{
        {"The host", "A page of the host's own", "Asha is signed in to Confera. One button opens the kit.",
         &Tour::seeHostPage},

        {"Home", "The kit opens", "It slides in over the page while the recent calls are on their way.",
         &Tour::openKit},
        {"Home", "Recent calls", "Whoever called, newest first.", &Tour::seeRecents},
        {"Home", "The backend fails",
         "It does not tell who uses the service: the table stays as it was, and nobody can be written to.",
         &Tour::meetFailingBackend},
        {"Home", "Contacts", "The phone's address book, a row for each number.", &Tour::seeContacts},
        {"Home", "A search", "Any part of a name, in either letter case.", &Tour::search},
        {"Home", "A search in vain", "Nobody of that name.", &Tour::searchInVain},
        {"Home", "The search is left", "All people are back, and the keyboard has gone.", &Tour::leaveSearch},
        {"Home", "A call to somebody without an account", "Only users of the service can be written to.",
         &Tour::callNonUser},
        {"Home", "A message to oneself",
         "Asha's own number is in her address book, and this time the backend names her too.", &Tour::callOneself},
        {"Home", "Asha's language", "It is the one of her voice messages and of her half of a conversation.",
         &Tour::chooseLanguage},

        {"Conversation", "Two people, one phone", "The upper half faces the person opposite.", &Tour::openConversation},
        {"Conversation", "How it works", "Behind the button at the right.", &Tour::readInformation},
        {"Conversation", "A language for each", "Each half has a picker of its own.", &Tour::chooseBothLanguages},
        {"Conversation", "The speaker says something", "Heard, recognised, translated, and read aloud opposite.",
         &Tour::speakerSpeaks},
        {"Conversation", "The listener answers", "The same the other way round.", &Tour::listenerAnswers},
        {"Conversation", "They go on", "One sentence each.", &Tour::goOnTalking},
        {"Conversation", "Something unintelligible",
         "Said in a language that this half does not listen for: both prompts come back.", &Tour::speakUnintelligibly},
        {"Conversation", "The languages are swapped", "And swapped back before Asha leaves.", &Tour::swapLanguages},

        {"Voice chat", "Nobody has said anything", "The first message to Meera is not recorded yet.",
         &Tour::openEmptyChat},
        {"Voice chat", "Asha says something", "Recorded, listened to, sent.", &Tour::sendMessage},
        {"Voice chat", "Meera answers", "It comes over the socket; Asha hears it in a voice of Meera's language.",
         &Tour::hearAnswer},
        {"Voice chat", "A chat with a past", "The newest of the messages that Asha and Rohan have sent each other.",
         &Tour::openLongChat},
        {"Voice chat", "Rohan writes while Asha reads older messages",
         "She keeps her place and is offered the way down.", &Tour::hearMessageWhileReading},

        {"And out", "Home again", "The recent calls have been fetched anew.", &Tour::comeHome},
        {"And out", "The host again", "The page is as it was.", &Tour::leaveKit},
        {"And out", "A second visit", "The people are there already.", &Tour::visitAgain},
    };
    return story;
}

tl::expected<void, QString> Tour::play()
{
    if (!m_folder.mkpath(u"recordings"_s))
        return tl::unexpected(u"The folder %1 cannot be made."_s.arg(m_folder.path()));
    ConsoleLog console(m_album.path(u"console.log"_s));
    std::vector<TourMoment> moments;
    tl::expected<void, QString> outcome;
    for (auto step = story().begin(); step != story().end() && outcome; ++step) {
        outcome = play(*step);
        m_moment.console = console.newLines();
        moments.push_back(std::move(m_moment));
    }
    const auto &languages = LanguageTranslation::shared();
    const QString subtitle =
        u"%1 and %2, on a screen of %3 × %4 points"_s
            .arg(rawValue(languages.language(Side::Speaker)), rawValue(languages.language(Side::Listener)))
            .arg(m_options.size.width())
            .arg(m_options.size.height());
    if (!writeTourPage(m_folder.path(), subtitle, moments) || !writeTranscript(m_folder.path(), m_turns))
        return tl::unexpected(u"The page cannot be written into %1."_s.arg(m_folder.path()));
    if (outcome)
        QTextStream(stderr)
            << u"%1 of %1 steps came through; see %2"_s.arg(moments.size()).arg(m_folder.filePath(u"index.html"_s))
            << Qt::endl;
    return outcome;
}

tl::expected<void, QString> Tour::play(const Step &step)
{
    m_moment = {.chapter = QString::fromUtf8(step.chapter),
                .title = QString::fromUtf8(step.title),
                .told = QString::fromUtf8(step.told),
                .pictures = {},
                .sounds = {},
                .words = {},
                .console = {},
                .problem = {}};
    QElapsedTimer clock;
    clock.start();
    (this->*step.act)();
    auto outcome = m_hand.outcome();
    if (const auto pictures = m_album.taken(); pictures)
        m_moment.pictures = *pictures;
    else if (outcome)
        outcome = tl::unexpected(pictures.error());
    if (!outcome) {
        m_moment.problem = outcome.error();
        return tl::unexpected(u"%1: %2"_s.arg(m_moment.title, m_moment.problem));
    }
    QTextStream(stderr) << u"%1 s   %2: %3"_s.arg(static_cast<double>(clock.elapsed()) / 1000, 4, 'f', 1)
                               .arg(m_moment.chapter, m_moment.title)
                        << Qt::endl;
    return {};
}

void Tour::playTurn(ConversationPlayer::Pictures pictures)
{
    if (!m_hand.isAtWork())
        return;
    const std::size_t number = m_turns.size();
    const Side side = number % 2 == 0 ? Side::Speaker : Side::Listener;
    const QString file = recordingOf(smallConversation.at(number), LanguageTranslation::shared().language(side));
    if (pictures == ConversationPlayer::Pictures::OfEveryState)
        m_hand.note(m_sandbox.delayNext(u"/translate"_s, 1s));
    if (!m_hand.isAtWork())
        return;
    const auto turn = m_conversation.playTurn(side, file, u"turn-%1"_s.arg(number + 1, 2, 10, QChar(u'0')), pictures);
    m_hand.note(turn.map([](const TurnRecord &) {}));
    if (!turn)
        return;
    m_turns.push_back(*turn);
    addWords(u"Recognised (%1)"_s.arg(turn->from), turn->recognised);
    addWords(u"Translated (%1)"_s.arg(turn->to), turn->translated);
    addWords(u"After the end of speech"_s,
             u"%1 ms recognised, %2 ms translated"_s.arg(turn->recognisedMs).arg(turn->translatedMs));
    addSound(u"Read aloud"_s, turn->spoken);
}

void Tour::speakUnintelligibly()
{
    const LanguageOption heard = LanguageTranslation::shared().language(Side::Listener);
    const LanguageOption spoken = heard == LanguageOption::english ? LanguageOption::hindi : LanguageOption::english;
    const QString file = recordingOf("dir.station", spoken);
    if (!m_hand.isAtWork())
        return;
    m_hand.note(m_conversation.playMisunderstanding(Side::Listener, file));
    m_album.settleAndTake(u"conversation-no-match"_s);
    addWords(u"Said"_s, m_props.actor.sentence("dir.station", spoken));
    addWords(u"Listened for"_s, rawValue(heard));
}

void Tour::sendMessage()
{
    const auto &language = languageEntry(LanguageTranslation::shared().language(Side::Speaker));
    m_chat.holdSending = [this] { m_hand.note(m_sandbox.delayNext(u"/api/chat/*"_s, 1500ms)); };
    const auto said = m_chat.say({language.translatorCode, QString::fromUtf8(saidInChat), {}, u"message"_s, true});
    m_hand.note(said.map([](const SaidAnswer &) {}));
    const auto stored = OtherPerson::signIn(newcomer()).and_then([&](const auto &other) {
        return other->textOf(said.value_or(SaidAnswer()).messageId, people().front().user);
    });
    m_hand.note(stored.map([](const QString &) {}));
    if (!m_hand.isAtWork())
        return;
    m_moment.pictures = said->pictures;
    addWords(u"Said"_s, said->said);
    addWords(u"Recognised"_s, said->recognised);
    addWords(u"On the wire, as Meera gets it"_s, *stored);
    if (*stored != language.recognitionLocale + "##"_L1 + said->recognised)
        m_hand.note(tl::unexpected(u"Meera got \"%1\"."_s.arg(*stored)));
    addSound(u"Listened to before sending"_s, u"message-asha-preview.wav"_s);
}

void Tour::hear(const Person &writer, const QString &name)
{
    if (!m_hand.isAtWork())
        return;
    const auto &language = languageEntry(m_options.listener.value_or(LanguageOption::hindi));
    const QString text =
        language.recognitionLocale + "## "_L1 + m_props.actor.sentence(answeredInChat, language.option);
    const auto sent = OtherPerson::signIn(writer).and_then(
        [&](const auto &other) { return other->send(people().front().user, text); });
    m_hand.note(sent.map([](const QString &) {}));
    if (!m_hand.isAtWork())
        return;
    const auto heard = m_chat.hear({*sent, name, true});
    m_hand.note(heard.map([](const HeardAnswer &) {}));
    if (!heard)
        return;
    m_moment.pictures = heard->pictures;
    addWords(u"On the wire"_s, heard->received);
    addWords(u"Voice"_s, heard->voice);
    addSound(u"Heard"_s, heard->wavFile);
    if (heard->received != text || heard->voice != language.synthesisVoice)
        m_hand.note(tl::unexpected(u"\"%1\" was heard in the voice %2."_s.arg(heard->received, heard->voice)));
}

} // namespace

tl::expected<void, QString> runTour(const Options &options, Stage &stage, Room &room, const Device &device,
                                    const examples::SandboxProcess &sandbox)
{
    return Tour(options, stage, room, device, sandbox).play();
}

} // namespace host

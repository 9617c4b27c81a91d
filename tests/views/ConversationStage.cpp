#include "tests/views/ConversationStage.h"

#include <QQuickItem>
#include <QTest>

#include "tests/fakes/Patience.h"

using namespace Qt::StringLiterals;

namespace vynlex {
namespace {

const QString question = u"Where is the railway station, please?"_s;
const QString questionInHindi = u"कृपया, रेलवे स्टेशन कहाँ है?"_s;

bool readAloud(ConversationStage &stage, const QString &who)
{
    if (!stage.press(u"Read aloud, "_s + who))
        return false;
    return eventually([&] { return stage.platform.speechService->utteranceCount() == 1; });
}

bool converse(ConversationStage &stage, const QString &said, const QString &translated)
{
    if (!stage.say(Side::Speaker, said))
        return false;
    stage.translate(translated);
    return stage.settle();
}

bool openPicker(ConversationStage &stage, const QString &who, Side side)
{
    const QString language = rawValue(stage.languages.language(side));
    return stage.press(u"%1 language: %2"_s.arg(who, language)) && stage.settle();
}

} // namespace

ConversationStage::ConversationStage(const DeviceShape &shape)
    : ScreenStage(shape)
{
    openIn(LanguageOption::english, LanguageOption::hindi);
}

ConversationStage::~ConversationStage()
{
    clear();
    if (platform.speechService->utteranceCount() > 0)
        platform.speechService->lastUtterance().complete(); // which nobody stops; a thread of the pool waits for it
}

bool ConversationStage::openIn(LanguageOption speaker, LanguageOption listener)
{
    languages.store(Side::Speaker, speaker);
    languages.store(Side::Listener, listener);
    root->dismiss(Animated::No);
    screen = std::make_shared<ConversationTranslateVC>(api, languages);
    root->present(screen, Animated::No);
    return settle();
}

bool ConversationStage::listen(Side side)
{
    const int before = platform.speechService->recognitionCount();
    return press(side == Side::Speaker ? u"Microphone, Speaker"_s : u"Microphone, Listener"_s) &&
           eventually([&] { return platform.speechService->recognitionCount() > before; }) && settle();
}

bool ConversationStage::say(Side side, const QString &text)
{
    const int before = platform.network->requestCount();
    return listen(side) && eventually([&] { return platform.speechService->lastRecognition().isStarted(); }) &&
           platform.speechService->lastRecognition().deliverRecognized(text) &&
           eventually([&] { return platform.network->requestCount() > before; }) && settle();
}

void ConversationStage::translate(const QString &text)
{
    const QByteArray body = u"[{\"translations\":[{\"text\":\"%1\",\"to\":\"xx\"}]}]"_s.arg(text).toUtf8();
    platform.network->answer(platform.network->requestCount() - 1, 200, body);
}

const std::vector<Scene<ConversationStage>> &ConversationStage::scenes()
{
    static const std::vector<Scene<ConversationStage>> scenes{
        {u"fresh"_s, [](auto &stage) { return stage.settle(); }},
        {u"speaker-listening"_s, [](auto &stage) { return stage.listen(Side::Speaker); }},
        {u"listener-listening"_s, [](auto &stage) { return stage.listen(Side::Listener); }},
        {u"being-translated"_s, [](auto &stage) { return stage.say(Side::Speaker, question); }},
        {u"translated"_s, [](auto &stage) { return converse(stage, question, questionInHindi); }},
        {u"listener-reading-aloud"_s,
         [](auto &stage) { return converse(stage, question, questionInHindi) && readAloud(stage, u"Listener"_s); }},
        {u"speaker-reading-aloud"_s,
         [](auto &stage) { return converse(stage, question, questionInHindi) && readAloud(stage, u"Speaker"_s); }},
        {u"long-texts"_s,
         [](auto &stage) {
             const QString said = question + u" I have two heavy bags and must catch the train at seven. "_s;
             const QString translated = questionInHindi + u" मेरे पास दो भारी बैग हैं और मुझे सात बजे की ट्रेन पकड़नी है। "_s;
             return converse(stage, said.repeated(5).trimmed(), translated.repeated(5).trimmed());
         }},
        {u"gujarati-telugu"_s,
         [](auto &stage) { return stage.openIn(LanguageOption::gujarati, LanguageOption::telugu); }},
        {u"bengali-marathi"_s,
         [](auto &stage) { return stage.openIn(LanguageOption::bengali, LanguageOption::marathi); }},
        {u"picker-from"_s, [](auto &stage) { return openPicker(stage, u"Speaker"_s, Side::Speaker); }},
        {u"picker-to"_s, [](auto &stage) { return openPicker(stage, u"Listener"_s, Side::Listener); }},
        {u"information"_s, [](auto &stage) { return stage.press(u"How it works"_s) && stage.settle(); }},
        {u"alert"_s,
         [](auto &stage) {
             // The button is hidden while its label shows the prompt; pressed all the same, the screen explains itself.
             stage.screen->didPressSpeakerSideTextToSpeachButtonAction();
             return stage.settle();
         }},
    };
    return scenes;
}

} // namespace vynlex

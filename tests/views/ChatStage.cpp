#include "tests/views/ChatStage.h"
#include "tests/fakes/Secrets.h"

#include <QDateTime>
#include <QLocale>
#include <QQuickItem>
#include <QTest>

#include "tests/fakes/Patience.h"

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace vynlex {
namespace {

/// When the message was written: 9:41 in London for the first, a minute later for each.
QDateTime moment(int number)
{
    return QDateTime({2026, 1, 31}, {9, 41}, Qt::UTC).addSecs(60 * number);
}

QString wireTime(int number)
{
    return moment(number).toString(u"yyyy-MM-ddThh:mm:ss.zzz"_s) + u"+0000"_s;
}

bool newMessageMeanwhile(ChatStage &stage)
{
    if (!stage.talk(8))
        return false;
    const QSize size = stage.window.size();
    stage.probe.drag({size.width() / 2, size.height() / 2}, {0, 150});
    stage.receive();
    return eventually([&] { return stage.probe.named(u"New message, show it"_s); });
}

bool inEveryScript(ChatStage &stage)
{
    stage.open(u"వేంకట సుబ్బారావు"_s);
    for (const QString &name :
         {u"आशा राव"_s, u"ઐશ્વર્યા પટેલ"_s, u"श्रीकृष्ण कुलकर्णी"_s, u"রবীন্দ্রনাথ ঠাকুর"_s, u"వేంకట సుబ్బారావు"_s, u"Ágnes Őry"_s})
        stage.receive(name);
    return eventually([&] { return stage.isInSight(ChatStage::playName(5, u"Ágnes Őry"_s)); });
}

} // namespace

ChatStage::ChatStage(const DeviceShape &shape)
    : ScreenStage(shape)
    , chat(api)
{
    api.setCredentials(u"me"_s, secrets::jwt);
    open(u"Asha Rao"_s);
}

ChatStage::~ChatStage()
{
    clear();
}

void ChatStage::open(const QString &name)
{
    root->dismiss(Animated::No);
    screen = std::make_shared<ChatVC>(chat, api, languages);
    screen->userModel.id = u"them"_s;
    screen->userModel.name = name;
    root->present(screen, Animated::No);
}

QString ChatStage::time(int number)
{
    return QLocale::c().toString(moment(number).toLocalTime().time(), u"h:mm AP"_s);
}

QString ChatStage::playName(int number, const QString &who)
{
    return u"Play, %1, %2"_s.arg(who, time(number));
}

bool ChatStage::isInSight(const QString &name) const
{
    QQuickItem *const list = probe.named(u"Messages"_s);
    QQuickItem *const control = probe.named(name);
    return list && control && list->boundingRect().contains(control->mapRectToItem(list, control->boundingRect()));
}

VLChatMessage ChatStage::next(const QString &creator)
{
    VLChatMessage message;
    message.createdAtString = wireTime(m_messages);
    message.id = u"message %1"_s.arg(m_messages++);
    message.threadId = u"thread"_s;
    message.creatorId = creator;
    message.messageText = u"en-US## Where is the railway station?"_s;
    return message;
}

bool ChatStage::load(int messages)
{
    const QString record = u"{\"_id\":\"m%1\",\"threadId\":\"thread\",\"createdBy\":\"me\",\"cOn\":\"%2\","
                           "\"messageComponent\":{\"text\":\"en-US##Hello\"}}"_s;
    QByteArrayList page;
    for (int number = messages - 1; number >= 0; --number)
        page << record.arg(number).arg(wireTime(number)).toUtf8();
    m_messages = messages;
    const int thread = platform.network->requestCount() - 1;
    return platform.network->answer(thread, 200, R"({"_id":"thread"})") &&
           platform.network->answer(thread + 1, 200, "{\"messages\":[" + page.join(',') + "]}");
}

void ChatStage::receive(const QString &name)
{
    VLChatMessage message = next(u"them"_s);
    message.creatorsName = name;
    chat.receiveSocketMessage(message);
    QCoreApplication::processEvents();
}

void ChatStage::sent()
{
    chat.messageSent(next(u"me"_s));
    QCoreApplication::processEvents();
}

bool ChatStage::talk(int times)
{
    for (int turn = 0; turn < times; ++turn) {
        receive();
        sent();
    }
    return eventually([&] { return isInSight(playName(m_messages - 1)); });
}

bool ChatStage::record(int seconds)
{
    const int before = platform.speechService->recognitionCount();
    const bool started = press(u"Voice Chat"_s) &&
                         eventually([&] { return platform.speechService->recognitionCount() > before; }) &&
                         eventually([&] { return platform.speechService->lastRecognition().isStarted(); });
    platform.clock->advance(std::chrono::seconds(seconds));
    return started;
}

bool ChatStage::recordAndStop(int seconds)
{
    return record(seconds) && platform.speechService->lastRecognition().deliverRecognized(u"hello there"_s) &&
           press(u"Stop recording"_s);
}

const std::vector<Scene<ChatStage>> &ChatStage::scenes()
{
    static const std::vector<Scene<ChatStage>> scenes{
        {u"chat-empty"_s,
         [](auto &stage) {
             return eventually([&] {
                 QQuickItem *const words = stage.probe.showing(u"Press Voice Chat to record a message."_s);
                 return words && qFuzzyCompare(words->parentItem()->opacity(), 1);
             });
         }},
        {u"chat-few"_s, [](auto &stage) { return stage.talk(1); }},
        {u"chat-idle"_s, [](auto &stage) { return stage.talk(8); }},
        {u"chat-new-message"_s, newMessageMeanwhile},
        {u"chat-by-keyboard"_s,
         [](auto &stage) {
             if (!stage.talk(8))
                 return false;
             for (const Qt::Key key : {Qt::Key_Tab, Qt::Key_Tab, Qt::Key_Up, Qt::Key_Up})
                 QTest::keyClick(&stage.window, key);
             return true;
         }},
        {u"chat-long-names"_s,
         [](auto &stage) {
             stage.open(longName);
             return stage.talk(8);
         }},
        {u"chat-indic-names"_s, inEveryScript},
        {u"chat-recording"_s, [](auto &stage) { return stage.talk(8) && stage.record(7); }},
        {u"chat-stopped"_s, [](auto &stage) { return stage.talk(8) && stage.recordAndStop(754); }},
        {u"chat-previewing"_s,
         [](auto &stage) {
             if (!stage.talk(8) || !stage.recordAndStop(10) || !stage.press(u"Play the recording"_s))
                 return false;
             stage.platform.clock->advance(4s);
             return true;
         }},
        {u"chat-sending"_s,
         [](auto &stage) {
             return stage.load(16) && eventually([&] { return stage.isInSight(playName(15)); }) &&
                    stage.recordAndStop(10) && stage.press(u"Send the message"_s);
         }},
        {u"chat-playing"_s,
         [](auto &stage) {
             return stage.talk(8) && stage.press(playName(14, u"Asha Rao"_s)) &&
                    eventually([&] { return stage.platform.speechService->utteranceCount() > 0; });
         }},
    };
    return scenes;
}

} // namespace vynlex

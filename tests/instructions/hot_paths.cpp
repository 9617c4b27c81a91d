// What the user waits for most often, once each under callgrind (see count-instructions): nothing else is counted.

#include <QCoreApplication>

#include <cmath>
#include <functional>

#include "api/ChatRecords.h"
#include "api/VLApiManager.h"
#include "chat/ChatViewModel.h"
#include "chat/SocketManager.h"
#include "platform/audio/AudioConverter.h"
#include "screens/ChatTable.h"
#include "screens/UserTable.h"
#include "tests/fakes/CapturedConsole.h"
#include "tests/fakes/TestPlatform.h"
#include <valgrind/callgrind.h>

using namespace Qt::StringLiterals;
using namespace vynlex;

namespace {

/// Counts `path`, which says whether it did what it is for; the first time warms caches up.
void count(const char *name, const std::function<bool()> &path)
{
    for (const bool counts : {false, true}) {
        if (counts)
            CALLGRIND_START_INSTRUMENTATION;
        const bool done = path();
        if (counts) {
            CALLGRIND_DUMP_STATS_AT(name);
            CALLGRIND_STOP_INSTRUMENTATION;
        }
        if (!done)
            qFatal("%s did nothing", name);
    }
}

QByteArray message(int number)
{
    return QStringLiteral(
               R"({"_id":"m%1","threadId":"thread","type":"message","createdBy":"them","creatorsName":"Asha",)"
               R"("creatorsLName":"Patel","cOn":"2026-01-31T09:15:00.000+0000","messageComponent":)"
               R"({"text":"hi-IN## मुझे दो रातों के लिए एक कमरा चाहिए।","attachments":[]}})")
        .arg(number)
        .toUtf8();
}

void decodePage()
{
    QByteArrayList messages;
    for (int number = 0; number < 150; ++number)
        messages << message(number);
    const QByteArray page = R"({"messages":[)" + messages.join(',') + "]}";
    count("decode-page", [&] {
        const auto decoded = decodeJson<VLThreadChatMessages>(page);
        return decoded && decoded->messages && decoded->messages->size() == 150;
    });
}

void searchKeystroke()
{
    std::vector<User> people;
    for (int person = 0; person < 10'000; ++person)
        people.push_back(
            {{}, (person % 10 ? u"Brian Fernandes %1"_s : u"Asha Rao %1"_s).arg(person), {}, u"+91 98765"_s});
    const auto users = std::make_shared<const UserList>(std::move(people));
    UserTable table;
    count("search-keystroke", [&] {
        table.reload(users, users->placesOfNamesWith(u"asha"_s));
        return table.rowCount() == 1000;
    });
}

void convertSecond()
{
    constexpr int frames = 2048;
    const AudioFormat microphone{48000, 1, AudioFormat::SampleType::Int16};
    const auto converter = AudioConverter::create(microphone, {16000, 1, AudioFormat::SampleType::Int16}).value();
    QByteArray sound(frames * 2, Qt::Uninitialized);
    auto *const samples = reinterpret_cast<qint16 *>(sound.data());
    for (int frame = 0; frame < frames; ++frame)
        samples[frame] = static_cast<qint16>(10'000 * std::sin(frame * 0.05));
    count("convert-second", [&] {
        int converted = 0;
        for (int buffer = 0; buffer < 48000 / frames; ++buffer)
            converted += converter->convert({microphone, sound}, 682).value().frameLength();
        return converted > 15'000;
    });
}

void socketFrames()
{
    const CapturedConsole console;
    TestPlatform platform;
    VLApiManager api;
    api.setCredentials(u"me"_s, u"a.b.c"_s);
    ChatViewModel chat(api);
    ChatTable table(chat.aryMessages);
    SocketManager sockets(chat);
    sockets.webSocketManager = std::make_unique<VLWebSocketManager>(VLApiServer::demo, u"a.b.c"_s);
    sockets.webSocketManager->isConnectedToNetwork = true;
    sockets.start();
    platform.socketWorker->run();
    FakeSocket server = platform.socketWorker->lastSocket();
    server.connected();
    chat.receivedID = u"them"_s;
    QCoreApplication::processEvents();
    int number = 0;
    count("socket-frames", [&] {
        const int before = table.rowCount();
        for (int frame = 0; frame < 100; ++frame) {
            server.text(R"({"event":"chatMessage","data":)" + message(number++) + "}");
            for (int tries = 0; tries < 10 && chat.aryMessages.size() < static_cast<std::size_t>(number); ++tries)
                QCoreApplication::processEvents();
            table.reload();
        }
        return table.rowCount() == before + 100;
    });
}

} // namespace

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    decodePage();
    searchKeystroke();
    convertSecond();
    socketFrames();
    return EXIT_SUCCESS;
}

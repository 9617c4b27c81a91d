// The chat screen as it is seen, drawn by the software renderer at 390 x 844 points: a chat being opened, from a frame
// of the socket to its row painted, and the pictures of a page being scrolled; beside a bare list view.

#include <QDateTime>
#include <QQuickItem>
#include <algorithm>
#include <map>
#include <vector>

#include "benchmarks/BareList.h"
#include "benchmarks/Figures.h"
#include "benchmarks/Scrolling.h"
#include "benchmarks/SoftwareScreen.h"
#include "chat/SocketManager.h"
#include "tests/fakes/CapturedConsole.h"
#include "tests/fakes/Patience.h"
#include "tests/views/ChatStage.h"

using namespace Qt::StringLiterals;
using namespace vynlex;

namespace {

constexpr int page = 150; ///< What is fetched of a chat.
constexpr int received = 300;
constexpr double step = 40; ///< Points a frame: a quick flick.

const QString historic =
    u"{\"_id\":\"m%1\",\"threadId\":\"thread\",\"type\":\"message\",\"createdBy\":\"me\",\"creatorsName\":\"Asha\","
    "\"creatorsLName\":\"Patel\",\"cOn\":\"%2.000+0000\",\"messageComponent\":{\"text\":\"hi-IN## मुझे दो रातों के लिए एक "
    "कमरा "
    "चाहिए। मुझे दो रातों के लिए एक कमरा चाहिए।\",\"attachments\":[]}}"_s;

const QString frame =
    u"{\"event\":\"chatMessage\",\"data\":{\"_id\":\"r%1\",\"threadId\":\"thread\",\"type\":\"message\","
    "\"createdBy\":\"them\",\"creatorsName\":\"Asha\",\"creatorsLName\":\"Patel\","
    "\"cOn\":\"2026-01-31T%2.000+0000\",\"messageComponent\":{\"text\":\"hi-IN## कृपया, रेलवे स्टेशन कहाँ है?\"}}}"_s;

/// Empty when a message does not arrive or its row is not in sight when it should be.
std::vector<double> receive(ChatStage &stage)
{
    SocketManager socket(stage.chat);
    socket.webSocketManager = std::make_unique<VLWebSocketManager>(VLApiServer::demo, u"a.b.c"_s);
    socket.webSocketManager->isConnectedToNetwork = true;
    socket.start();
    stage.platform.socketWorker->run();
    FakeSocket server = stage.platform.socketWorker->lastSocket();
    server.connected();
    QCoreApplication::processEvents();

    int frames = 0;
    QObject::connect(&stage.window, &QQuickWindow::frameSwapped, &stage.window, [&frames] { ++frames; });
    const QQuickItem *const list = listIn(*stage.window.contentItem());
    std::vector<double> ms;
    for (int number = 0; number < received; ++number) {
        QTest::qWait(10); // nothing is left to be drawn
        const QString time = QTime(0, 0).addSecs(number * 60).toString(u"hh:mm:ss"_s);
        const int count = list->property("count").toInt();
        ms.push_back(milliseconds([&] {
            server.text(frame.arg(number).arg(time).toUtf8());
            while (list->property("count").toInt() == count)
                QCoreApplication::processEvents();
            for (const int before = frames; frames == before;)
                QCoreApplication::processEvents();
        }));
        if (!list->property("atYEnd").toBool())
            return {};
    }
    return ms;
}

/// As the backend sends them: half a kilobyte a message, newest first.
QByteArray pageOf(int messages)
{
    QByteArrayList records;
    for (int number = messages - 1; number >= 0; --number)
        records << historic.arg(number)
                       .arg(QDateTime({2026, 1, 1}, {}, Qt::UTC).addSecs(60 * number).toString(Qt::ISODate).chopped(1))
                       .toUtf8();
    return "{\"messages\":[" + records.join(',') + "]}";
}

/// From the backend's answer to the newest message drawn. Negative when the answer is not taken.
double open(ChatStage &stage, const QByteArray &answer, int messages)
{
    stage.open(u"Asha Rao"_s);
    static_cast<void>(stage.window.grabWindow()); // the empty screen, which is seen meanwhile
    const QQuickItem *const list = listIn(*stage.window.contentItem());
    const int thread = stage.platform.network->requestCount() - 1;
    if (!stage.platform.network->answer(thread, 200, R"({"_id":"thread"})"))
        return -1;
    bool isTaken = false;
    const double ms = milliseconds([&] {
        isTaken = stage.platform.network->answer(thread + 1, 200, answer);
        while (isTaken && (list->property("count").toInt() < messages || !list->property("atYEnd").toBool()))
            QCoreApplication::processEvents();
        static_cast<void>(stage.window.grabWindow());
    });
    return isTaken ? ms : -1;
}

/// What opening does first.
std::size_t readRecords(const QByteArray &answer)
{
    const auto read = decodeJson<VLThreadChatMessages>(answer);
    return read && read->messages ? read->messages->size() : 0;
}

} // namespace

int main(int argc, char **argv)
{
    const SoftwareScreen screen(argc, argv);
    const Figures figures(argc, argv);
    const std::pair<int, int> openings[] = {{150, 15}, {1500, 9}, {15'000, 5}}; // messages, how often
    std::map<int, std::vector<double>> opening;
    std::map<int, std::vector<double>> reading;
    std::map<int, std::vector<double>> showing;
    std::size_t read = 0;
    std::vector<double> receiving;
    std::vector<double> scrolling;
    std::vector<double> bareScrolling;
    {
        const CapturedConsole console; // what the kit prints would be drawn by nobody
        BareList bare;
        ChatStage stage(deviceShapes().front());
        for (const auto &[messages, times] : openings) {
            const QByteArray answer = pageOf(messages);
            for (int time = 0; time < times; ++time) { // by turns, so that both see the same machine
                opening[messages].push_back(open(stage, answer, messages));
                reading[messages].push_back(milliseconds([&] { read += readRecords(answer); }));
                showing[messages].push_back(milliseconds([&] { bare.show(messages, BareList::From::Last); }));
            }
        }
        open(stage, pageOf(page), page);
        receiving = receive(stage);
        scrolling = scroll(stage.window, *listIn(*stage.window.contentItem()), -step, 1000);
        bareScrolling = scroll(bare.window, *bare.list, -step, static_cast<int>(scrolling.size()));
    }
    if (receiving.empty() || std::ranges::min(opening[page]) < 0 || read == 0)
        return EXIT_FAILURE;
    for (const auto &[messages, times] : openings) {
        const QByteArray number = QByteArray::number(messages);
        figures.print("opening a chat of " + number, opening[messages]);
        figures.print("reading the records of " + number, reading[messages]);
        figures.print("a list view of " + number, showing[messages]);
    }
    figures.print("from the socket's frame to its row", receiving);
    figures.print("a picture while scrolling", scrolling);
    figures.print("a picture of the list view while scrolling", bareScrolling);
    return EXIT_SUCCESS;
}

// The chat screen as it is seen, drawn by the software renderer at 390 x 844 points: from a frame of the socket to its
// row painted, and the pictures of a page of 150 messages being scrolled from end to end.

#include <QElapsedTimer>
#include <QGuiApplication>
#include <QQuickItem>
#include <QTextStream>

#include <algorithm>
#include <vector>

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

const QString frame =
    u"{\"event\":\"chatMessage\",\"data\":{\"_id\":\"r%1\",\"threadId\":\"thread\",\"type\":\"message\","
    "\"createdBy\":\"them\",\"creatorsName\":\"Asha\",\"creatorsLName\":\"Patel\","
    "\"cOn\":\"2026-01-31T%2.000+0000\",\"messageComponent\":{\"text\":\"hi-IN## कृपया, रेलवे स्टेशन कहाँ है?\"}}}"_s;

double percentile(std::vector<double> values, double share)
{
    std::ranges::sort(values);
    return values.at(static_cast<std::size_t>(share * static_cast<double>(values.size() - 1)));
}

void print(const char *what, const std::vector<double> &ms)
{
    QTextStream(stdout) << what << ": median " << percentile(ms, 0.5) << " ms, 95th percentile " << percentile(ms, 0.95)
                        << " ms, longest " << percentile(ms, 1) << " ms" << Qt::endl;
}

QQuickItem *listOf(const ChatStage &stage)
{
    for (QQuickItem *item : stage.probe.named(u"Messages"_s)->childItems()) {
        if (item->inherits("QQuickListView"))
            return item;
    }
    return nullptr;
}

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
    const QQuickItem *const list = listOf(stage);
    std::vector<double> ms;
    QElapsedTimer timer;
    for (int number = 0; number < received; ++number) {
        QTest::qWait(10); // nothing is left to be drawn
        const QString time = QTime(0, 0).addSecs(number * 60).toString(u"hh:mm:ss"_s);
        const int count = list->property("count").toInt();
        timer.start();
        server.text(frame.arg(number).arg(time).toUtf8());
        while (list->property("count").toInt() == count)
            QCoreApplication::processEvents();
        for (const int before = frames; frames == before;)
            QCoreApplication::processEvents();
        ms.push_back(static_cast<double>(timer.nsecsElapsed()) / 1e6);
        if (!list->property("atYEnd").toBool())
            return {};
    }
    return ms;
}

std::vector<double> scroll(ChatStage &stage)
{
    QQuickItem *const list = listOf(stage);
    std::vector<double> ms;
    QElapsedTimer timer;
    while (!list->property("atYBeginning").toBool()) {
        timer.start();
        list->setProperty("contentY", list->property("contentY").toDouble() - step);
        static_cast<void>(stage.window.grabWindow());
        ms.push_back(static_cast<double>(timer.nsecsElapsed()) / 1e6);
    }
    return ms;
}

/// From the backend's answer to the newest message drawn.
double open(ChatStage &stage)
{
    QElapsedTimer timer;
    timer.start();
    stage.load(page);
    while (!stage.isInSight(ChatStage::playName(page - 1)))
        QCoreApplication::processEvents();
    static_cast<void>(stage.window.grabWindow());
    return static_cast<double>(timer.nsecsElapsed()) / 1e6;
}

} // namespace

int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("QT_QUICK_BACKEND", "software");
    QGuiApplication application(argc, argv);
    double opening = 0;
    std::vector<double> receiving;
    std::vector<double> scrolling;
    {
        const CapturedConsole console; // what the kit prints would be drawn by nobody
        ChatStage stage(deviceShapes().front());
        opening = open(stage);
        receiving = receive(stage);
        scrolling = scroll(stage);
    }
    if (receiving.empty())
        return EXIT_FAILURE;
    QTextStream(stdout) << "opening a page of messages: " << opening << " ms" << Qt::endl;
    print("from the socket's frame to its row", receiving);
    print("a picture while scrolling", scrolling);
    return EXIT_SUCCESS;
}

// A host's window: how long from the start of its process to its first frame, and the memory that it holds once nothing
// moves any more. One program of three, which differ in what they have of the kit: nothing (HOST_BARE), the linked
// library (HOST_LINKED), the home screen opened at once (HOST_OPEN).
//   host-open NANOSECONDS     of the monotonic clock, when the process was started

#include <QElapsedTimer>
#include <QFile>
#include <QGuiApplication>
#include <QQmlEngine>
#include <QQuickItem>
#include <QQuickView>
#include <QTextStream>
#include <QTimer>

#include <optional>
#include <time.h>

#ifndef HOST_BARE
#    include <VynlexTranslationSDK/VLTranslationView.h>
#endif

namespace {

double nowMs()
{
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<double>(now.tv_sec) * 1e3 + static_cast<double>(now.tv_nsec) / 1e6;
}

/// Of this process, in KiB: "Rss" (all that is in memory), "Pss" (its share of it), "Anonymous" (its own).
int memoryKiB(const QByteArray &kind)
{
    QFile file(QStringLiteral("/proc/self/smaps_rollup"));
    if (!file.open(QIODevice::ReadOnly))
        return -1;
    for (const QByteArray &line : file.readAll().split('\n')) {
        if (line.startsWith(kind + ':'))
            return line.mid(kind.size() + 1).simplified().split(' ').first().toInt();
    }
    return -1;
}

} // namespace

int main(int argc, char **argv)
{
    const double startMs = QByteArray(argc > 1 ? argv[1] : "0").toDouble() / 1e6;
    QGuiApplication application(argc, argv);
    QCoreApplication::setOrganizationName(QStringLiteral("VynlexBenchmark"));
    QQuickView window;
    QQmlComponent page(window.engine());
    page.setData("import QtQuick\n"
                 "Rectangle { width: 390; height: 844; Text { anchors.centerIn: parent; text: 'A host' } }\n",
                 {});
    window.setContent({}, &page, page.create());
#ifndef HOST_BARE
    const vynlex::VLTranslationConfig config(QStringLiteral("key"), QStringLiteral("centralindia"),
                                             QStringLiteral("key"));
#endif
#ifdef HOST_OPEN
    vynlex::VLTranslationView translation(window.contentItem());
    QQmlEngine::setContextForObject(&translation, window.rootContext()); // as if it stood in the page
    translation.setUpTranslationScreen(QStringLiteral("token"), config);
#endif
    window.show();

    std::optional<double> firstFrameMs;
    std::optional<double> screenMs; ///< the first frame in which the kit's screen may be
    QObject::connect(&window, &QQuickWindow::frameSwapped, &window, [&] {
        if (!firstFrameMs)
            firstFrameMs = nowMs() - startMs;
#ifdef HOST_OPEN
        for (const QQuickItem *item : window.contentItem()->childItems()) {
            if (!screenMs && item->inherits("vynlex::KitOverlay") && item->isVisible())
                screenMs = nowMs() - startMs;
        }
#endif
    });
    QTimer::singleShot(3000, &application, [&] {
        QTextStream(stdout) << R"({"firstFrameMs":)" << firstFrameMs.value_or(-1) << R"(,"screenMs":)"
                            << screenMs.value_or(-1) << R"(,"rssKiB":)" << memoryKiB("Rss") << R"(,"pssKiB":)"
                            << memoryKiB("Pss") << R"(,"anonymousKiB":)" << memoryKiB("Anonymous") << "}" << Qt::endl;
        QCoreApplication::quit();
    });
    return QGuiApplication::exec();
}

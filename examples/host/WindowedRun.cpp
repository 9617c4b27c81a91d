#include "WindowedRun.h"

#include <QGuiApplication>
#include <QQuickView>
#include <QScreen>
#include <QTemporaryDir>

#include "SayPanel.h"
#include "platform/dispatch/FatalError.h"

using namespace Qt::StringLiterals;

namespace host {
namespace {

constexpr int panelWidth = 300;
constexpr int gapBetweenWindows = 20;

/// The panel's window, beside the phone's, with which it is hidden and closed.
std::unique_ptr<QQuickView> makePanelWindow(Stage &stage, SayPanel &panel)
{
    auto view = std::make_unique<QQuickView>(&stage.engine(), nullptr);
    view->setTitle(u"What is said"_s);
    view->setTransientParent(&stage.window());
    view->setResizeMode(QQuickView::SizeRootObjectToView);
    view->setInitialProperties({{u"panel"_s, QVariant::fromValue(&panel)}});
    view->setSource(QUrl(u"qrc:/qt-project.org/imports/ConferaHost/SayPanel.qml"_s));
    if (view->status() != QQuickView::Ready)
        vynlex::fatalError(u"The panel cannot be shown."_s); // Qt has told why
    return view;
}

} // namespace

int runWindowed(Stage &stage, Room &room, const WindowPlace &place, bool needsVoice)
{
    QQuickWindow &window = stage.window();
    window.setTitle(place.title);
    const QTemporaryDir recordings;
    room.setPlayback(Room::Speed::AsFastAsAccepted); // only recordings of what is to be said are made in the room
    SayPanel sayPanel(stage, room, recordings.path());
    const std::unique_ptr<QQuickView> panel = needsVoice ? makePanelWindow(stage, sayPanel) : nullptr;
    if (place.fromLeft) {
        const int taken = window.width() + gapBetweenWindows + (panel ? panelWidth + gapBetweenWindows : 0);
        window.setPosition(window.screen()->availableGeometry().topLeft() + QPoint(*place.fromLeft * taken, 0));
    }
    window.show();
    if (panel) {
        panel->setGeometry(window.x() + window.width() + gapBetweenWindows, window.y(), panelWidth, window.height());
        panel->show();
        window.requestActivate(); // the keyboard stays with the phone
    }
    return QGuiApplication::exec();
}

} // namespace host

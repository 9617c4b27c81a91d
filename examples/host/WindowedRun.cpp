#include "WindowedRun.h"

#include <QGuiApplication>
#include <QQmlComponent>
#include <QScreen>
#include <QTemporaryDir>

#include "SayPanel.h"
#include "platform/dispatch/FatalError.h"

using namespace Qt::StringLiterals;

namespace host {
namespace {

constexpr qreal panelWidth = 300;
constexpr int gapBetweenWindows = 20;

/// Lays the panel beside the phone; both grow with the window.
std::unique_ptr<QQuickItem> makePanel(Stage &stage, SayPanel &panel)
{
    QQmlComponent component(&stage.engine(), QUrl(u"qrc:/qt-project.org/imports/ConferaHost/SayPanel.qml"_s));
    auto *const item =
        qobject_cast<QQuickItem *>(component.createWithInitialProperties({{u"panel"_s, QVariant::fromValue(&panel)}}));
    if (!item)
        vynlex::fatalError(u"The panel cannot be shown: %1"_s.arg(component.errorString()));
    QJSEngine::setObjectOwnership(item, QJSEngine::CppOwnership);
    item->setParentItem(stage.window().contentItem());
    return std::unique_ptr<QQuickItem>(item);
}

} // namespace

int runWindowed(Stage &stage, Room &room, const WindowPlace &place, bool needsVoice)
{
    QQuickWindow &window = stage.window();
    window.setTitle(place.title);
    const QTemporaryDir recordings;
    room.setPlayback(Room::Speed::AsFastAsAccepted); // only recordings of what is to be said are made in the room
    SayPanel sayPanel(stage, room, recordings.path());
    std::unique_ptr<QQuickItem> panel;
    if (needsVoice) {
        panel = makePanel(stage, sayPanel);
        window.setWidth(window.width() + static_cast<int>(panelWidth));
    }
    const auto layOut = [&] {
        const qreal phoneWidth = window.width() - (panel ? panelWidth : 0);
        stage.phone().setSize({phoneWidth, static_cast<qreal>(window.height())});
        if (panel) {
            panel->setX(phoneWidth);
            panel->setSize({panelWidth, static_cast<qreal>(window.height())});
        }
    };
    QObject::connect(&window, &QQuickWindow::widthChanged, &sayPanel, layOut);
    QObject::connect(&window, &QQuickWindow::heightChanged, &sayPanel, layOut);
    layOut();
    if (place.fromLeft)
        window.setPosition(window.screen()->availableGeometry().topLeft() +
                           QPoint(*place.fromLeft * (window.width() + gapBetweenWindows), 0));
    window.show();
    return QGuiApplication::exec();
}

} // namespace host

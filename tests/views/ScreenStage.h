#pragma once

#include <QMarginsF>
#include <QQmlEngine>
#include <QQuickWindow>
#include <QSize>
#include <QString>

#include <algorithm>
#include <functional>
#include <memory>
#include <vector>

#include "api/VLApiManager.h"
#include "language/LanguageTranslation.h"
#include "platform/ui/ScreenHost.h"
#include "platform/ui/ScreenWindow.h"
#include "tests/fakes/TestPlatform.h"
#include "tests/views/ViewProbe.h"

namespace vynlex {

/// What a device has in common with others of its kind, as far as layouts care.
struct DeviceShape {
    QString name;
    QSize size; ///< points
    qreal fontScale = 1;
    QMarginsF safeArea = {};
};

[[nodiscard]] const std::vector<DeviceShape> &deviceShapes();

/// So long that it may be cut off.
inline const QString longName = QStringLiteral("Venkatanarasimharajuvaripeta Subrahmanyam Chandrasekharan");

/// A moment of a screen worth looking at, and how it comes about on `Stage`. `play` says whether it came about.
template<typename Stage> struct Scene {
    QString name;
    std::function<bool(Stage &)> play;
};

/// Plays the stage's moment of this name; false when there is none, or it does not come about.
template<typename Stage> bool play(Stage &stage, const QString &name)
{
    const auto scene = std::ranges::find(Stage::scenes(), name, &Scene<Stage>::name);
    return scene != Stage::scenes().end() && scene->play(stage);
}

/// A screen in a window of its own, over the whole of the kit's code and a device made of fakes.
///
/// One at a time, on the main thread. The font scale is back to 1 when it goes.
class ScreenStage {
public:
    /// Waits until nothing slides, springs or scrolls any more.
    bool settle();
    /// Presses the visible control of this name. False when there is none.
    bool press(const QString &name);

    /// The window, and the screen in it, become as large as that.
    void resize(const QSize &size);

    TestPlatform platform;
    VLApiManager api;
    LanguageTranslation languages;
    std::shared_ptr<ViewController> root;
    QQuickWindow window;
    const ViewProbe probe;

protected:
    explicit ScreenStage(const DeviceShape &shape);
    ~ScreenStage();

    /// Takes the views away, which read from the screens.
    void clear();

private:
    QQmlEngine m_engine;
    std::unique_ptr<ScreenWindow> m_screens;
    std::unique_ptr<ScreenHost> m_host;
};

} // namespace vynlex

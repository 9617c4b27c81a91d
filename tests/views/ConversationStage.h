#pragma once

#include <QMarginsF>
#include <QQmlEngine>
#include <QQuickWindow>
#include <QSize>
#include <QString>

#include <functional>
#include <memory>
#include <vector>

#include "api/VLApiManager.h"
#include "conversation/ConversationTranslateVC.h"
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

/// The conversation screen in a window of its own, over the whole of the kit's code and a device made of fakes.
///
/// One at a time, on the main thread. The font scale is back to 1 when it goes.
class ConversationStage {
public:
    explicit ConversationStage(const DeviceShape &shape);
    ~ConversationStage();

    /// A moment of the conversation worth looking at, and how it comes about. `play` says whether it came about.
    struct Scene {
        QString name;
        std::function<bool(ConversationStage &)> play;
    };
    [[nodiscard]] static const std::vector<Scene> &scenes();

    /// Presses a side's microphone by finger and waits until the screen listens.
    bool listen(Side side);
    /// The side says `text`, which is recognised and on its way to the translator.
    bool say(Side side, const QString &text);
    /// The translator answers its last request.
    void translate(const QString &text);
    /// Waits until nothing slides or springs any more.
    bool settle();
    /// Presses the visible control of this name. False when there is none.
    bool press(const QString &name);

    TestPlatform platform;
    VLApiManager api;
    LanguageTranslation languages;
    std::shared_ptr<ViewController> root;
    std::shared_ptr<ConversationTranslateVC> screen;
    QQuickWindow window;
    const ViewProbe probe;

private:
    QQmlEngine m_engine;
    std::unique_ptr<ScreenWindow> m_screens;
    std::unique_ptr<ScreenHost> m_host;
};

} // namespace vynlex

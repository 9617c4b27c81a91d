#pragma once

#include <QQmlEngine>
#include <QQuickWindow>
#include <QString>

#include <memory>
#include <tl/expected.hpp>

#include "HostPage.h"
#include "platform/ui/ScreenHost.h"
#include "platform/ui/ScreenWindow.h"

namespace host {

/// The phone's picture: a window, the screens in it, and how to wait for them and take their picture.
///
/// Main thread.
class Stage {
public:
    /// `size` in points.
    explicit Stage(QSize size);
    ~Stage();

    [[nodiscard]] QQuickWindow &window() { return *m_window; }
    [[nodiscard]] QQmlEngine &engine() { return m_engine; }
    [[nodiscard]] HostPage &page() { return *m_page; }
    /// The part of the window that is the phone; the window may be larger.
    [[nodiscard]] QQuickItem &phone() { return *m_screenHost; }

    /// The screen that is on top, without the container that it may be in.
    [[nodiscard]] vynlex::ViewController &topScreen() const;

    /// Waits until no screen moves any more, and a little longer for what moves inside of one.
    void settle();

    /// Draws the screen and writes it to `file` (PNG, device pixels). An error is one clear line.
    [[nodiscard]] tl::expected<void, QString> takePicture(const QString &file);

    /// Turns the wheel over the middle of the phone, and waits until what is there has come to rest; down is positive.
    void scroll(int notches);

private:
    QQmlEngine m_engine;
    std::shared_ptr<HostPage> m_page;
    vynlex::ScreenWindow m_screens;
    std::unique_ptr<QQuickWindow> m_window;
    std::unique_ptr<vynlex::ScreenHost> m_screenHost;
};

} // namespace host

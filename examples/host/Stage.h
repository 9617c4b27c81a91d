#pragma once

#include <VynlexTranslationSDK/VLTranslationConfig.h>

#include <QQmlEngine>
#include <QQuickWindow>
#include <QString>

#include <memory>
#include <tl/expected.hpp>

namespace vynlex {
class ViewController;
}

namespace host {

/// What a host knows once its user has signed in, and hands to the kit.
struct SignedInUser {
    QString name;     ///< empty: nobody is signed in
    QString webToken; ///< empty likewise
    vynlex::VLTranslationConfig config;
};

/// The host application: a window, the host's own page in it, and over it, once the user has pressed the page's button,
/// the kit's screens.
///
/// The window is an ordinary one, and what lies below the page knows nothing of the kit; only `topScreen` looks behind
/// the kit's screens, for those who want to know when something is over. Main thread.
class Stage {
public:
    /// `size` in points; `textScale` is the host's own.
    Stage(QSize size, SignedInUser user, double textScale);
    ~Stage();

    [[nodiscard]] QQuickWindow &window() const { return *m_window; }
    [[nodiscard]] QQmlEngine &engine() { return m_engine; }
    [[nodiscard]] const SignedInUser &user() const { return m_user; }

    /// The kit's screen that is on top, without the container that it may be in; null while the host's page is shown.
    [[nodiscard]] vynlex::ViewController *topScreen() const;
    /// The same, when it is one of this kind; else null.
    template<typename Screen> [[nodiscard]] Screen *screen() const { return dynamic_cast<Screen *>(topScreen()); }

    /// A screen is entering or leaving.
    [[nodiscard]] bool isMoving() const;
    /// Waits until no screen moves any more and the picture has come to rest; where something never rests, as a wave
    /// does, until everything else has.
    void settle();

    /// Draws the window and writes it to `file` (PNG, device pixels). An error is one clear line.
    [[nodiscard]] tl::expected<void, QString> takePicture(const QString &file);

private:
    QQmlEngine m_engine;
    const SignedInUser m_user;
    std::unique_ptr<QQuickWindow> m_window;
    std::unique_ptr<QQuickItem> m_page; ///< It goes before the window that it is in.
};

} // namespace host

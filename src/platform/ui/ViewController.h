#pragma once

#include <QObject>
#include <QQmlEngine>
#include <QUrl>

#include <memory>

namespace vynlex {

enum class Animated { No, Yes };

/// A screen without pixels: its state, its events, and its place among the presented screens.
///
/// Main thread, held by `shared_ptr`. A presentation owns what it presents. A screen that is dismissed leaves the chain
/// of presented screens at once and is destroyed on a later turn of the main queue, after its view is gone: it may
/// dismiss itself from its own callbacks.
class ViewController : public QObject {
    Q_OBJECT
    QML_NAMED_ELEMENT(ViewController)
    QML_UNCREATABLE("Screens are made by the kit.")

public:
    /// `FullScreen` hides what lies below once it is there; the others leave it visible.
    enum class ModalPresentationStyle { FullScreen, OverCurrentContext, Custom };
    Q_ENUM(ModalPresentationStyle)

    /// How an animated presentation comes and goes.
    enum class ModalTransitionStyle { CoverVertical, PushFromRight, CrossDissolve };
    Q_ENUM(ModalTransitionStyle)

    ViewController();
    ~ViewController() override;

    ModalPresentationStyle modalPresentationStyle = ModalPresentationStyle::FullScreen;
    ModalTransitionStyle modalTransitionStyle = ModalTransitionStyle::CoverVertical;

    /// The QML view of this screen, which takes `required property ... controller` and, for the safe area,
    /// `required property ScreenWindow window`; empty for a screen that shows nothing.
    [[nodiscard]] virtual QUrl viewSource() const { return {}; }
    /// The screen whose view is shown for this one: a container's content, else itself.
    [[nodiscard]] virtual ViewController &contentViewController() { return *this; }

    /// Sets the screen up when it is first needed; presenting does so. `viewDidLoad` runs once.
    void loadViewIfNeeded();
    [[nodiscard]] bool isViewLoaded() const { return m_viewLoaded; }

    /// Shows `controller` over this screen, or over the container that this screen is in. Ignored while one is
    /// presented already (a second press of a button that is about to be covered), or when `controller` is presented
    /// elsewhere.
    void present(std::shared_ptr<ViewController> controller, Animated animated);

    /// Takes away what this screen (or its container) presents, with everything above it; when it presents nothing,
    /// takes away this screen itself. Ignored for a screen that is not presented.
    void dismiss(Animated animated);

    [[nodiscard]] std::shared_ptr<ViewController> presentedViewController() const;
    [[nodiscard]] ViewController *presentingViewController() const;
    [[nodiscard]] ViewController *parentViewController() const { return m_container; }

    /// Whether the last presentation or dismissal of this screen is to be seen moving.
    [[nodiscard]] Animated transition() const { return m_transition; }

signals:
    void presentedViewControllerChanged();

protected:
    virtual void viewDidLoad() {}

    /// For containers: makes `container` the one that presents for this screen. Null lets go.
    static void setContainer(ViewController &content, ViewController *container) { content.m_container = container; }

private:
    [[nodiscard]] const ViewController &outermost() const;
    [[nodiscard]] ViewController &outermost();
    void dismissPresented(Animated animated);

    std::shared_ptr<ViewController> m_presented;
    ViewController *m_presenting = nullptr;
    ViewController *m_container = nullptr;
    Animated m_transition = Animated::No;
    bool m_viewLoaded = false;
};

} // namespace vynlex

#pragma once

#include <QMarginsF>
#include <QObject>
#include <QQmlEngine>

#include <memory>
#include <vector>

#include "platform/ui/ViewController.h"

namespace vynlex {

/// A window as the screens know it, without pixels: a root screen, what is presented over it, and the margins that the
/// device's edges take.
///
/// Main thread. At most one window is the key window, the one that the user works in.
class ScreenWindow : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Windows are made by the host.")

    Q_PROPERTY(qreal safeAreaTop READ safeAreaTop NOTIFY safeAreaInsetsChanged FINAL)
    Q_PROPERTY(qreal safeAreaBottom READ safeAreaBottom NOTIFY safeAreaInsetsChanged FINAL)
    Q_PROPERTY(qreal safeAreaLeft READ safeAreaLeft NOTIFY safeAreaInsetsChanged FINAL)
    Q_PROPERTY(qreal safeAreaRight READ safeAreaRight NOTIFY safeAreaInsetsChanged FINAL)

public:
    explicit ScreenWindow(std::shared_ptr<ViewController> rootViewController = {});
    ~ScreenWindow() override;

    [[nodiscard]] std::shared_ptr<ViewController> rootViewController() const { return m_root; }
    void setRootViewController(std::shared_ptr<ViewController> rootViewController);

    /// The root, what it presents, what that presents, and so on; empty without a root.
    [[nodiscard]] std::vector<std::shared_ptr<ViewController>> presentedChain() const;

    /// Points that notches, rounded corners and system bars take from each edge; none unless the host sets them.
    [[nodiscard]] QMarginsF safeAreaInsets() const { return m_safeAreaInsets; }
    void setSafeAreaInsets(const QMarginsF &insets);
    [[nodiscard]] qreal safeAreaTop() const { return m_safeAreaInsets.top(); }
    [[nodiscard]] qreal safeAreaBottom() const { return m_safeAreaInsets.bottom(); }
    [[nodiscard]] qreal safeAreaLeft() const { return m_safeAreaInsets.left(); }
    [[nodiscard]] qreal safeAreaRight() const { return m_safeAreaInsets.right(); }

    void makeKey();
    /// Null when there is none.
    [[nodiscard]] static ScreenWindow *key();

signals:
    void rootViewControllerChanged();
    void safeAreaInsetsChanged();

private:
    std::shared_ptr<ViewController> m_root;
    QMarginsF m_safeAreaInsets;
};

/// The last screen of the key window's chain of presented screens. Without a key window, or without a root in it, a new
/// and empty screen that is shown nowhere.
[[nodiscard]] std::shared_ptr<ViewController> topMostViewController();

} // namespace vynlex

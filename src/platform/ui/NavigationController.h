#pragma once

#include <QPointer>

#include "platform/ui/ViewController.h"

namespace vynlex {

/// A container around one root screen, which it shows in its place.
class NavigationController : public ViewController {
    Q_OBJECT
    QML_ANONYMOUS

public:
    explicit NavigationController(std::shared_ptr<ViewController> rootViewController);
    ~NavigationController() override;

    [[nodiscard]] std::shared_ptr<ViewController> rootViewController() const { return m_root; }
    [[nodiscard]] ViewController &contentViewController() override { return m_root->contentViewController(); }

protected:
    void viewDidLoad() override;

private:
    /// Shared: the same root may stand in a second container while the first is still shown. The last one presents for
    /// it, and hands it back when it goes.
    std::shared_ptr<ViewController> m_root;
    QPointer<ViewController> m_formerContainer;
};

} // namespace vynlex

#pragma once

#include "platform/ui/ViewController.h"

namespace host {

/// The host's own screen, from which it opens the kit.
class HostPage : public vynlex::ViewController {
    Q_OBJECT
    QML_NAMED_ELEMENT(HostPageController)
    QML_UNCREATABLE("The page is made by the host.")

public:
    /// Opens the conversation translator over this page.
    Q_INVOKABLE void didPressTranslateAction();

    [[nodiscard]] QUrl viewSource() const override;
};

} // namespace host

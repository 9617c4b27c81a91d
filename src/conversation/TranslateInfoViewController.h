#pragma once

#include "platform/ui/ViewController.h"

namespace vynlex {

/// How the conversation screen is used, on a page of its own.
class TranslateInfoViewController : public ViewController {
    Q_OBJECT
    QML_NAMED_ELEMENT(TranslateInfoController)
    QML_UNCREATABLE("Screens are made by the kit.")

public:
    Q_INVOKABLE void didPressCloseButtonAction() { dismiss(Animated::Yes); }

    [[nodiscard]] QUrl viewSource() const override;
};

} // namespace vynlex

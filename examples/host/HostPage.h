#pragma once

#include "api/DirectoryRecords.h"
#include "platform/ui/ViewController.h"

namespace host {

/// The host's own screen, from which it opens the kit.
class HostPage : public vynlex::ViewController {
    Q_OBJECT
    QML_NAMED_ELEMENT(HostPageController)
    QML_UNCREATABLE("The page is made by the host.")

    /// Empty as long as there is nobody to chat with.
    Q_PROPERTY(QString chatPartner READ chatPartner NOTIFY chatPartnerChanged FINAL)

public:
    [[nodiscard]] QString chatPartner() const { return m_chatPartner.name; }
    void setChatPartner(const vynlex::User &partner);

    /// Opens the conversation translator over this page.
    Q_INVOKABLE void didPressTranslateAction();

    /// Opens the voice chat with the partner over this page.
    Q_INVOKABLE void didPressChatAction();

    [[nodiscard]] QUrl viewSource() const override;

signals:
    void chatPartnerChanged();

private:
    vynlex::User m_chatPartner;
};

} // namespace host

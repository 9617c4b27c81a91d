#pragma once

#include <QString>
#include <QStringList>

#include <vector>

#include "platform/dispatch/Task.h"
#include "platform/ui/ViewController.h"

namespace vynlex {

struct AlertAction {
    QString title;
    Task handler; ///< May be empty: the alert only goes away.
};

/// A message with buttons, over the screen that presents it.
class AlertController : public ViewController {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Alerts are made by their screen.")

    Q_PROPERTY(QString title READ title CONSTANT FINAL)
    Q_PROPERTY(QString message READ message CONSTANT FINAL)
    Q_PROPERTY(QStringList actionTitles READ actionTitles CONSTANT FINAL)

public:
    /// `actions` in the order of the buttons, at least one.
    AlertController(QString title, QString message, std::vector<AlertAction> actions);

    [[nodiscard]] QString title() const { return m_title; }
    [[nodiscard]] QString message() const { return m_message; }
    [[nodiscard]] QStringList actionTitles() const;

    /// Dismisses the alert, then runs the action's handler. Other indexes, and a second press, are ignored.
    Q_INVOKABLE void didPressAction(int index);

    [[nodiscard]] QUrl viewSource() const override;

private:
    const QString m_title;
    const QString m_message;
    std::vector<AlertAction> m_actions;
};

} // namespace vynlex

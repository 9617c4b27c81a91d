#include "platform/ui/AlertController.h"

#include "platform/ui/ViewSource.h"

using namespace Qt::StringLiterals;

namespace vynlex {

AlertController::AlertController(QString title, QString message, std::vector<AlertAction> actions)
    : m_title(std::move(title))
    , m_message(std::move(message))
    , m_actions(std::move(actions))
{
    modalPresentationStyle = ModalPresentationStyle::OverCurrentContext;
    modalTransitionStyle = ModalTransitionStyle::CrossDissolve;
}

QStringList AlertController::actionTitles() const
{
    QStringList titles;
    for (const AlertAction &action : m_actions)
        titles << action.title;
    return titles;
}

void AlertController::didPressAction(int index)
{
    if (index < 0 || static_cast<std::size_t>(index) >= m_actions.size() || !presentingViewController())
        return;
    const Task handler = m_actions[static_cast<std::size_t>(index)].handler;
    dismiss(Animated::Yes);
    if (handler)
        handler();
}

QUrl AlertController::viewSource() const
{
    return viewInModule(u"Ui"_s, u"AlertView"_s);
}

} // namespace vynlex

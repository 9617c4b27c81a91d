#include "screens/ChatVC.h"

#include "platform/ui/ViewSource.h"

using namespace Qt::StringLiterals;

namespace vynlex {

ChatVC::ChatVC(ChatViewModel &, VLApiManager &, LanguageTranslation &) {}

ChatVC::~ChatVC() = default;

QUrl ChatVC::viewSource() const
{
    return viewInModule(u"Screens"_s, u"ChatVC"_s);
}

void ChatVC::viewDidLoad() {}

void ChatVC::backAction() {}
void ChatVC::voiceChatAction() {}
void ChatVC::messageChatAction() {}
void ChatVC::microphoneClickedAction() {}
void ChatVC::stopRecordingORsendMessageAction() {}
void ChatVC::handleMicOrDeleteButtonAction() {}
void ChatVC::audioPlayButtonAction() {}
void ChatVC::didPressPlayButton(int) {}
void ChatVC::didSelectRow(int) {}

ChatVC::PanelState ChatVC::panelState() const
{
    if (bottomPanelBackgroundView->isHidden())
        return PanelState::Idle;
    return stopORSendButton->isSelected() ? PanelState::Stopped : PanelState::Recording;
}

} // namespace vynlex

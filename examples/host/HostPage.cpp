#include "HostPage.h"

#include "conversation/TranslationStoryboard.h"
#include "platform/ui/NavigationController.h"
#include "platform/ui/Storyboard.h"
#include "screens/ChatVC.h"

using namespace Qt::StringLiterals;
using namespace vynlex;

namespace host {

void HostPage::didPressTranslateAction()
{
    const auto screen = translationStoryboard().instantiateViewController(u"ConversationTranslateVC"_s);
    screen->modalPresentationStyle = ModalPresentationStyle::FullScreen;
    present(screen, Animated::Yes);
}

void HostPage::setChatPartner(const User &partner)
{
    m_chatPartner = partner;
    emit chatPartnerChanged();
}

void HostPage::didPressChatAction()
{
    const auto screen = std::make_shared<ChatVC>();
    screen->userModel = m_chatPartner;
    present(std::make_shared<NavigationController>(screen), Animated::Yes);
}

QUrl HostPage::viewSource() const
{
    return QUrl(u"qrc:/qt-project.org/imports/ConferaHost/HostPage.qml"_s);
}

} // namespace host

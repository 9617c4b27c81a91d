#include "screens/HomeVC.h"

#include "api/VLApiManager.h"
#include "chat/SocketManager.h"
#include "language/LanguageTranslation.h"
#include "platform/ui/Color.h"
#include "platform/ui/ResourceBundle.h"
#include "platform/ui/ViewSource.h"

using namespace Qt::StringLiterals;

namespace vynlex {

HomeVC::HomeVC()
    : HomeVC(VLApiManager::shared(), LanguageTranslation::shared(), SocketManager::shared())
{
}

HomeVC::HomeVC(VLApiManager &apiManager, LanguageTranslation &languages, SocketManager &socketManager)
    : m_apiManager(apiManager)
    , m_languages(languages)
    , m_socketManager(socketManager)
{
    using enum ButtonState::Appearance;
    headerTitleLabel->setText(u"VynTranslate"_s);
    headerTitleLabel->setTextColor(Qt::white);
    notificationButton->setImage(ResourceBundle::image(u"notify_icon"_s), Normal);
    translateButton->setImage(ResourceBundle::image(u"translate_icon"_s), Normal);
    contactsButton->setTitle(u"Contacts"_s);
    recentsButton->setTitle(u"Recent"_s);
}

HomeVC::~HomeVC() = default;

QUrl HomeVC::viewSource() const
{
    return viewInModule(u"Screens"_s, u"HomeVC"_s);
}

QUrl HomeVC::transitionImageView()
{
    return ResourceBundle::image(u"home_bottom_transition"_s);
}

void HomeVC::viewDidLoad() {}

void HomeVC::fetchJWToken(std::function<void()>) {}
void HomeVC::loadData() {}
void HomeVC::contactsButtonTapped() {}
void HomeVC::recentsButtonTapped() {}
void HomeVC::searchBarTextDidChange(const QString &) {}
void HomeVC::searchBarSearchButtonClicked() {}
void HomeVC::searchBarCancelButtonClicked() {}
void HomeVC::callButtonTapped(int) {}
void HomeVC::voiceButtonTapped(int) {}
void HomeVC::translateLanguageButtonTapped() {}
void HomeVC::didPressLanguageButtonTapped() {}

} // namespace vynlex

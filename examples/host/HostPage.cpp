#include "HostPage.h"

#include "conversation/TranslationStoryboard.h"
#include "platform/ui/Storyboard.h"

using namespace Qt::StringLiterals;
using namespace vynlex;

namespace host {

void HostPage::didPressTranslateAction()
{
    const auto screen = translationStoryboard().instantiateViewController(u"ConversationTranslateVC"_s);
    screen->modalPresentationStyle = ModalPresentationStyle::FullScreen;
    present(screen, Animated::Yes);
}

QUrl HostPage::viewSource() const
{
    return QUrl(u"qrc:/qt-project.org/imports/ConferaHost/HostPage.qml"_s);
}

} // namespace host

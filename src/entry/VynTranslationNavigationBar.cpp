#include "entry/VynTranslationNavigationBar.h"

#include "platform/dispatch/MainQueue.h"
#include "platform/ui/ScreenWindow.h"

namespace vynlex {

void VynTranslationNavigationBar::presentOverTopScreen()
{
    // Without a key window and a root in it, the top-most screen is one that stands nowhere.
    const ScreenWindow *const window = ScreenWindow::key();
    const Animated push = window && window->rootViewController() ? Animated::Yes : Animated::No;
    modalTransitionStyle = ModalTransitionStyle::PushFromRight;
    modalPresentationStyle = ModalPresentationStyle::Custom;
    topMostViewController()->modalPresentationStyle = ModalPresentationStyle::OverCurrentContext;
    MainQueue::async([self = shared_from_this(), push] { topMostViewController()->present(self, push); });
}

} // namespace vynlex

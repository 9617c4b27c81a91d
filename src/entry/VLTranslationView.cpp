#include <VynlexTranslationSDK/VLTranslationView.h>

#include <QGuiApplication>
#include <QQmlEngine>
#include <QQuickWindow>

#include "api/VLApiManager.h"
#include "entry/KitOverlay.h"
#include "entry/VynTranslationNavigationBar.h"
#include "platform/dispatch/Lifetime.h"
#include "platform/dispatch/MainQueue.h"
#include "screens/HomeVC.h"

namespace vynlex {

struct VLTranslationView::Core {
    const std::shared_ptr<HomeVC> homeScreen = std::make_shared<HomeVC>();
    Lifetime lifetime;
};

namespace {

/// What is presented next comes up in the view's window, else in the one that the user works in, else in the last one.
void chooseKeyWindow(const QQuickItem &view)
{
    auto *const focused = qobject_cast<QQuickWindow *>(QGuiApplication::focusWindow());
    if (QQuickWindow *const window = view.window() ? view.window() : focused)
        KitOverlay::in(*window, qmlEngine(&view)).makeKey();
}

} // namespace

VLTranslationView::VLTranslationView(QQuickItem *parent)
    : VLTranslationView(QRectF(), parent)
{
}

VLTranslationView::VLTranslationView(const QRectF &frame, QQuickItem *parent)
    : QQuickItem(parent)
    , m_core(std::make_unique<Core>())
{
    setPosition(frame.topLeft());
    setSize(frame.size());
}

VLTranslationView::~VLTranslationView() = default;

void VLTranslationView::setUpTranslationScreen(const QString &webToken, const VLTranslationConfig &config)
{
    const std::shared_ptr<HomeVC> &homeScreen = m_core->homeScreen;
    VLApiManager::shared().translatedConfig = config;
    const auto container = std::make_shared<VynTranslationNavigationBar>(homeScreen);
    homeScreen->webToken = webToken;
    // Weak: the answer for a user whose screen nobody holds any more must not sign that user in after the next one.
    homeScreen->fetchJWToken([home = std::weak_ptr(homeScreen)] {
        if (const auto screen = home.lock())
            screen->loadData();
    });
    chooseKeyWindow(*this);
    // Once more on the turn of the presentation: a view is often set up before it is put into its window.
    MainQueue::async(m_core->lifetime.guard([this] { chooseKeyWindow(*this); }));
    container->presentOverTopScreen();
}

} // namespace vynlex

#include "platform/ui/ViewController.h"

#include "platform/dispatch/MainQueue.h"

namespace vynlex {

ViewController::ViewController()
{
    // Views see controllers; the engine's collector must never take one for its own.
    QJSEngine::setObjectOwnership(this, QJSEngine::CppOwnership);
}

ViewController::~ViewController()
{
    if (m_presented)
        m_presented->m_presenting = nullptr;
}

void ViewController::loadViewIfNeeded()
{
    if (m_viewLoaded)
        return;
    m_viewLoaded = true;
    viewDidLoad();
}

void ViewController::present(std::shared_ptr<ViewController> controller, Animated animated)
{
    ViewController &presenter = outermost();
    if (presenter.m_presented || controller->m_presenting || controller.get() == &presenter)
        return;
    controller->m_presenting = &presenter;
    controller->m_transition = animated;
    controller->loadViewIfNeeded();
    presenter.m_presented = std::move(controller);
    emit presenter.presentedViewControllerChanged();
}

void ViewController::dismiss(Animated animated)
{
    ViewController &self = outermost();
    if (self.m_presented)
        self.dismissPresented(animated);
    else if (self.m_presenting)
        self.m_presenting->dismissPresented(animated);
}

void ViewController::dismissPresented(Animated animated)
{
    const std::shared_ptr<ViewController> leaving = std::exchange(m_presented, nullptr);
    leaving->m_presenting = nullptr;
    leaving->m_transition = animated;
    // What `leaving` presents goes with it, covered by it, and so without a movement of its own.
    emit presentedViewControllerChanged();
    // It may be one of its own callbacks that brought us here.
    MainQueue::async([leaving] {});
}

std::shared_ptr<ViewController> ViewController::presentedViewController() const
{
    return outermost().m_presented;
}

ViewController *ViewController::presentingViewController() const
{
    return outermost().m_presenting;
}

const ViewController &ViewController::outermost() const
{
    const ViewController *controller = this;
    while (controller->m_container)
        controller = controller->m_container;
    return *controller;
}

ViewController &ViewController::outermost()
{
    return const_cast<ViewController &>(std::as_const(*this).outermost());
}

} // namespace vynlex

#include "platform/ui/NavigationController.h"

namespace vynlex {

NavigationController::NavigationController(std::shared_ptr<ViewController> rootViewController)
    : m_root(std::move(rootViewController))
{
    setContainer(*m_root, this);
}

NavigationController::~NavigationController()
{
    if (m_root->parentViewController() == this)
        setContainer(*m_root, nullptr);
}

void NavigationController::viewDidLoad()
{
    m_root->loadViewIfNeeded();
}

} // namespace vynlex

#include "platform/ui/NavigationController.h"

namespace vynlex {

NavigationController::NavigationController(std::shared_ptr<ViewController> rootViewController)
    : m_root(std::move(rootViewController))
    , m_formerContainer(m_root->parentViewController())
{
    setContainer(*m_root, this);
}

NavigationController::~NavigationController()
{
    if (m_root->parentViewController() == this)
        setContainer(*m_root, m_formerContainer);
}

void NavigationController::viewDidLoad()
{
    m_root->loadViewIfNeeded();
}

} // namespace vynlex

#include "platform/ui/ScreenWindow.h"

namespace vynlex {
namespace {

ScreenWindow *&keyWindow()
{
    static ScreenWindow *window = nullptr;
    return window;
}

} // namespace

ScreenWindow::ScreenWindow(std::shared_ptr<ViewController> rootViewController)
    : m_root(std::move(rootViewController))
{
    QJSEngine::setObjectOwnership(this, QJSEngine::CppOwnership);
    if (m_root)
        m_root->loadViewIfNeeded();
}

ScreenWindow::~ScreenWindow()
{
    if (keyWindow() == this)
        keyWindow() = nullptr;
}

void ScreenWindow::setRootViewController(std::shared_ptr<ViewController> rootViewController)
{
    const auto before = std::exchange(m_root, std::move(rootViewController));
    if (m_root)
        m_root->loadViewIfNeeded();
    if (m_root != before)
        emit rootViewControllerChanged();
}

std::vector<std::shared_ptr<ViewController>> ScreenWindow::presentedChain() const
{
    std::vector<std::shared_ptr<ViewController>> chain;
    for (auto controller = m_root; controller; controller = controller->presentedViewController())
        chain.push_back(controller);
    return chain;
}

void ScreenWindow::setSafeAreaInsets(const QMarginsF &insets)
{
    if (insets == m_safeAreaInsets)
        return;
    m_safeAreaInsets = insets;
    emit safeAreaInsetsChanged();
}

void ScreenWindow::makeKey()
{
    keyWindow() = this;
}

ScreenWindow *ScreenWindow::key()
{
    return keyWindow();
}

std::shared_ptr<ViewController> topMostViewController()
{
    std::vector<std::shared_ptr<ViewController>> chain;
    if (const ScreenWindow *const window = ScreenWindow::key())
        chain = window->presentedChain();
    return chain.empty() ? std::make_shared<ViewController>() : chain.back();
}

} // namespace vynlex

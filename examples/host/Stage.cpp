#include "Stage.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QEventLoop>
#include <QTimer>

using namespace std::chrono_literals;

namespace host {

Stage::Stage(QSize size)
    : m_page(std::make_shared<HostPage>())
    , m_screens(m_page)
    , m_window(std::make_unique<QQuickWindow>())
    , m_screenHost(std::make_unique<vynlex::ScreenHost>(m_engine, m_screens, m_window->contentItem()))
{
    m_window->resize(size);
    m_screenHost->setSize(size);
    m_screens.makeKey();
}

Stage::~Stage()
{
    m_screenHost.reset(); // views go before the window that they are in, and before their controllers
}

bool Stage::waitUntil(const std::function<bool()> &condition, std::chrono::milliseconds limit)
{
    const QDeadlineTimer deadline(limit);
    QTimer tick; // wakes the loop for conditions that no event announces
    tick.start(10);
    while (!condition()) {
        if (deadline.hasExpired())
            return false;
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    return true;
}

void Stage::settle()
{
    waitUntil([&] { return !m_screenHost->isMoving(); }, 3s);
    waitUntil([] { return false; }, 600ms); // the picker's spring takes 500 ms
}

bool Stage::takePicture(const QString &file)
{
    const QImage image = m_window->grabWindow();
    return !image.isNull() && image.save(file);
}

} // namespace host

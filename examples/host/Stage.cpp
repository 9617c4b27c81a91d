#include "Stage.h"

#include <QImage>

#include "Waiting.h"

using namespace Qt::StringLiterals;
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

void Stage::settle()
{
    waitUntil([&] { return !m_screenHost->isMoving(); }, 3s);
    letPass(600ms); // the picker's spring takes 500 ms
}

tl::expected<void, QString> Stage::takePicture(const QString &file)
{
    const QImage image = m_window->grabWindow();
    if (image.isNull() || !image.save(file))
        return tl::unexpected(u"The picture %1 cannot be written."_s.arg(file));
    return {};
}

} // namespace host

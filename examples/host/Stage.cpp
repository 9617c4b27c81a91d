#include "Stage.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QImage>
#include <QWheelEvent>

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

vynlex::ViewController &Stage::topScreen() const
{
    return m_screens.presentedChain().back()->contentViewController();
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

void Stage::scroll(int notches)
{
    const QPointF middle(m_screenHost->width() / 2, m_screenHost->height() / 2);
    const QPoint notch(0, notches > 0 ? -120 : 120);
    for (int i = 0; i < std::abs(notches); ++i) {
        QWheelEvent turn(middle, middle, {}, notch, Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
        turn.setTimestamp(static_cast<quint64>(QDateTime::currentMSecsSinceEpoch()));
        QCoreApplication::sendEvent(m_window.get(), &turn);
        letPass(30ms);
    }
    settle();
}

} // namespace host

#include "Stage.h"

#include <QDeadlineTimer>
#include <QImage>
#include <QQmlComponent>
#include <QQuickItem>

#include "Waiting.h"
#include "platform/dispatch/FatalError.h"
#include "platform/ui/ScreenHost.h"
#include "platform/ui/ScreenWindow.h"

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using namespace vynlex;

namespace host {
namespace {

/// The picker's spring, the longest of what comes to an end, takes 500 ms.
constexpr auto longestRest = 600ms;
constexpr auto betweenLooks = 60ms;

std::unique_ptr<QQuickItem> makePage(QQmlEngine &engine, const SignedInUser &user, double textScale)
{
    QQmlComponent component(&engine, QUrl(u"qrc:/qt-project.org/imports/ConferaHost/HostPage.qml"_s));
    auto *const page = qobject_cast<QQuickItem *>(
        component.createWithInitialProperties({{u"userName"_s, user.name},
                                               {u"webToken"_s, user.webToken},
                                               {u"config"_s, QVariant::fromValue(user.config)},
                                               {u"textScale"_s, textScale}}));
    if (!page)
        fatalError(u"The host's page cannot be shown: %1"_s.arg(component.errorString()));
    QJSEngine::setObjectOwnership(page, QJSEngine::CppOwnership);
    return std::unique_ptr<QQuickItem>(page);
}

} // namespace

Stage::Stage(QSize size, SignedInUser user, double textScale)
    : m_user(std::move(user))
    , m_window(std::make_unique<QQuickWindow>())
    , m_page(makePage(m_engine, m_user, textScale))
{
    m_window->setTitle(u"Confera"_s);
    m_window->resize(size);
    m_page->setParentItem(m_window->contentItem());
    const auto fillWindow = [this] { m_page->setSize(m_window->size()); };
    QObject::connect(m_window.get(), &QQuickWindow::widthChanged, m_page.get(), fillWindow);
    QObject::connect(m_window.get(), &QQuickWindow::heightChanged, m_page.get(), fillWindow);
    fillWindow();
}

Stage::~Stage() = default;

ViewController *Stage::topScreen() const
{
    const ScreenWindow *const screens = ScreenWindow::key();
    const auto chain = screens ? screens->presentedChain() : std::vector<std::shared_ptr<ViewController>>();
    // The first stands for the host.
    return chain.size() < 2 ? nullptr : &chain.back()->contentViewController();
}

bool Stage::isMoving() const
{
    const auto *const kit = m_window->contentItem()->findChild<ScreenHost *>();
    return kit && kit->isMoving();
}

void Stage::settle()
{
    waitUntil([this] { return !isMoving(); }, 3s);
    const QDeadlineTimer limit(longestRest);
    QImage before;
    for (QImage now = m_window->grabWindow(); now != before && !limit.hasExpired(); now = m_window->grabWindow()) {
        before = now;
        letPass(betweenLooks);
    }
}

tl::expected<void, QString> Stage::takePicture(const QString &file)
{
    const QImage image = m_window->grabWindow();
    if (image.isNull() || !image.save(file))
        return tl::unexpected(u"The picture %1 cannot be written."_s.arg(file));
    return {};
}

} // namespace host

#include "tests/views/ScreenStage.h"
#include "tests/fakes/Secrets.h"

#include <QQuickItem>
#include <QTest>

#include "platform/ui/KitFont.h"
#include "tests/fakes/Patience.h"

using namespace Qt::StringLiterals;

namespace vynlex {

const std::vector<DeviceShape> &deviceShapes()
{
    static const std::vector<DeviceShape> shapes{
        {u"phone"_s, {390, 844}, 1, {0, 47, 0, 34}},
#ifndef __SANITIZE_ADDRESS__ // Layouts differ from device to device, what is allocated for them does not.
        {u"small-phone"_s, {320, 568}, 1, {0, 20, 0, 0}},
        {u"small-phone-lying"_s, {568, 320}, 1, {}},
        {u"tablet"_s, {768, 1024}, 1, {0, 24, 0, 20}},
        {u"landscape"_s, {844, 390}, 1, {47, 0, 47, 21}},
        {u"large-type"_s, {390, 844}, 2, {0, 47, 0, 34}},
        {u"small-phone-large-type"_s, {320, 568}, 2, {0, 20, 0, 0}},
#endif
        {u"landscape-large-type"_s, {844, 390}, 2, {47, 0, 47, 21}},
    };
    return shapes;
}

ScreenStage::ScreenStage(const DeviceShape &shape)
    : languages(platform.userDefaults)
    , root(std::make_shared<ViewController>())
    , probe(window)
{
    api.translatedConfig = VLTranslationConfig(secrets::speechKey, u"testregion"_s, secrets::translationKey);
    KitFont::shared().setScale(shape.fontScale);
    window.show();
    window.requestActivate();
    Q_UNUSED(QTest::qWaitForWindowActive(&window, patienceMs));
    m_screens = std::make_unique<ScreenWindow>(root);
    m_screens->setSafeAreaInsets(shape.safeArea);
    m_screens->makeKey();
    m_host = std::make_unique<ScreenHost>(m_engine, *m_screens, window.contentItem());
    resize(shape.size);
}

ScreenStage::~ScreenStage()
{
    KitFont::shared().setScale(1);
}

void ScreenStage::clear()
{
    m_host.reset();
    root.reset();
}

void ScreenStage::resize(const QSize &size)
{
    window.resize(size);
    m_host->setSize(size);
}

bool ScreenStage::settle()
{
    return eventually([&] { return !m_host->isMoving() && !probe.moves(); });
}

bool ScreenStage::press(const QString &name)
{
    QQuickItem *const control = probe.named(name);
    if (control)
        probe.tap(*control);
    return control;
}

} // namespace vynlex

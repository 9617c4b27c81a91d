#include <VynlexTranslationSDK/VLTranslationView.h>

#include "api/VLApiManager.h"
#include "entry/KitOverlay.h"
#include "entry/VynTranslationNavigationBar.h"
#include "platform/ui/ScreenWindow.h"
#include "screens/HomeVC.h"
#include "tests/fakes/Patience.h"
#include "tests/fakes/Rows.h"
#include "tests/fakes/Secrets.h"
#include "tests/fakes/TestPlatform.h"
#include "tests/views/ViewProbe.h"

#include <QQmlComponent>
#include <QQmlEngine>
#include <QQuickWindow>
#include <QTest>

using namespace vynlex;
using namespace Qt::StringLiterals;

namespace {

const VLTranslationConfig config(u"speech"_s, u"centralindia"_s, u"translator"_s);

constexpr auto hostText = "import QtQuick\n"
                          "import VynlexTranslationSDK\n"
                          "Window {\n"
                          "    id: root\n"
                          "    required property var config\n"
                          "    property alias page: page\n"
                          "    property alias view: view\n"
                          "    function open(webToken) { view.setUpTranslationScreen(webToken, root.config) }\n"
                          "    width: 390; height: 844; visible: true\n"
                          "    Item {\n"
                          "        id: page\n"
                          "        property int taps\n"
                          "        property int keys\n"
                          "        anchors.fill: parent\n"
                          "        focus: true\n"
                          "        Keys.onPressed: ++page.keys\n"
                          "        TapHandler { onTapped: ++page.taps }\n"
                          "    }\n"
                          "    VLTranslationView { id: view }\n"
                          "}\n";

/// An application in QML: one window, one page that fills it, and the kit's view.
struct Host {
    std::unique_ptr<QQmlEngine> engine = std::make_unique<QQmlEngine>();
    std::unique_ptr<QQuickWindow> window;

    Host()
    {
        QQmlComponent component(engine.get());
        component.setData(hostText, {});
        window.reset(qobject_cast<QQuickWindow *>(
            component.createWithInitialProperties({{u"config"_s, QVariant::fromValue(config)}})));
        if (!window)
            qFatal("%s", qPrintable(component.errorString()));
        QJSEngine::setObjectOwnership(window.get(), QJSEngine::CppOwnership);
    }

    [[nodiscard]] bool show() const { return QTest::qWaitForWindowActive(window.get(), patienceMs); }
    void open(const QString &webToken = u"web"_s) const
    {
        QMetaObject::invokeMethod(window.get(), "open", Q_ARG(QVariant, webToken));
    }
    void tap() const { QTest::mouseClick(window.get(), Qt::LeftButton, {}, {200, 600}); }
    void press(Qt::Key key) const { QTest::keyClick(window.get(), key); }

    [[nodiscard]] QQuickItem *page() const { return window->property("page").value<QQuickItem *>(); }
    [[nodiscard]] VLTranslationView *view() const { return window->property("view").value<VLTranslationView *>(); }
    [[nodiscard]] KitOverlay *overlay() const { return window->contentItem()->findChild<KitOverlay *>(); }
};

/// The screens of the kit that are shown, the lowest first.
std::vector<std::shared_ptr<ViewController>> openScreens()
{
    auto chain = ScreenWindow::key() ? ScreenWindow::key()->presentedChain() : decltype(openScreens()){};
    if (!chain.empty())
        chain.erase(chain.begin()); // what stands for the host
    return chain;
}

HomeVC &homeIn(ViewController &container)
{
    return dynamic_cast<HomeVC &>(container.contentViewController());
}

} // namespace

class tst_entry : public QObject {
    Q_OBJECT

    const TestPlatform m_platform;

    [[nodiscard]] FakeHttpNetwork &backend() const { return *m_platform.network; }
    /// Answers the latest exchange of a web token.
    void answerToken(const QByteArray &jwt) const
    {
        int request = backend().requestCount() - 1;
        while (backend().request(request).url.path() != u"/api/externalservertp/get-token")
            --request;
        backend().answer(request, 200, R"({"jwt":")" + jwt + R"("})");
    }
    [[nodiscard]] bool asksForCalls(int since) const
    {
        for (int request = since; request < backend().requestCount(); ++request) {
            if (backend().request(request).url.path() == u"/api/calls")
                return true;
        }
        return false;
    }

private slots:
    void cleanup() { settle(); } // for what was dismissed

    void settingUpOpensTheHomeScreenOverTheHost()
    {
        Host host;
        QVERIFY(host.show());
        host.open();
        QCOMPARE(VLApiManager::shared().translatedConfig, config);
        QVERIFY(openScreens().empty()); // presented on the next turn

        settle();
        QCOMPARE(openScreens().size(), 1U);
        ViewController &container = *openScreens().front();
        QVERIFY(dynamic_cast<VynTranslationNavigationBar *>(&container));
        QCOMPARE(homeIn(container).webToken, u"web"_s);
        QCOMPARE(container.modalPresentationStyle, ViewController::ModalPresentationStyle::Custom);
        QCOMPARE(container.transition(), Animated::Yes);
        QCOMPARE(container.presentingViewController()->modalPresentationStyle,
                 ViewController::ModalPresentationStyle::OverCurrentContext);

        QVERIFY(host.page()->isVisible()); // while the screen comes in
        TRY_VERIFY(!host.page()->isVisible());
        QCOMPARE(host.overlay()->size(), QSizeF(390, 844));
        host.window->resize(844, 390);
        TRY_COMPARE(host.overlay()->size(), QSizeF(844, 390));
    }

    void anAnswerForAScreenThatNobodyHoldsIsDropped()
    {
        Host host;
        QVERIFY(host.show());
        VLApiManager::shared().currentJWT = u"next user"_s;
        const int before = backend().requestCount();
        host.open();
        settle();
        const std::weak_ptr container = openScreens().front();
        host.press(Qt::Key_Escape);
        delete host.view();
        TRY_VERIFY(container.expired());
        answerToken(secrets::jwt.data());
        settle();
        QCOMPARE(VLApiManager::shared().currentJWT, u"next user"_s);
        QVERIFY(!asksForCalls(before));
    }

    void theHostIsOutOfReachMeanwhileAndThenAsItWas()
    {
        Host host;
        QVERIFY(host.show());
        for (int visit = 0; visit < 2; ++visit) { // out, and in again
            const QPointer<QQuickItem> before = host.window->activeFocusItem();
            QCOMPARE(before, host.page());
            host.open();
            TRY_VERIFY(!host.page()->isVisible());
            host.tap();
            host.press(Qt::Key_A);
            host.page()->forceActiveFocus();
            host.press(Qt::Key_A);
            QCOMPARE(host.page()->property("taps").toInt(), visit);
            QCOMPARE(host.page()->property("keys").toInt(), visit);
            QQuickItem *const screen = host.window->activeFocusItem();
            host.press(Qt::Key_Tab); // from the screen to its first control
            QVERIFY(screen != host.window->activeFocusItem() && screen->isAncestorOf(host.window->activeFocusItem()));

            const std::weak_ptr container = openScreens().front();
            if (visit == 1) { // the first press puts the keyboard of a search away
                const ViewProbe probe(*host.window);
                probe.click(*probe.named(u"Search"_s));
                host.press(Qt::Key_Back);
                QCOMPARE(openScreens().size(), 1U);
            }
            host.press(visit == 0 ? Qt::Key_Escape : Qt::Key_Back);
            QVERIFY(openScreens().empty());
            TRY_VERIFY(!host.overlay()->isVisible() && container.expired());
            host.tap();
            host.press(Qt::Key_A);
            QCOMPARE(host.page()->property("taps").toInt(), visit + 1);
            QCOMPARE(host.page()->property("keys").toInt(), visit + 1);
        }
    }

    void eachSetUpOpensTheSameHomeScreenAboveWhatIsShown()
    {
        Host host;
        QVERIFY(host.show());
        host.open(u"first"_s);
        const VLTranslationConfig other(u"other"_s, {}, {});
        host.view()->setUpTranslationScreen(u"second"_s, other);
        settle();
        QCOMPARE(VLApiManager::shared().translatedConfig, other);
        QCOMPARE(openScreens().size(), 2U);
        HomeVC &home = homeIn(*openScreens().front());
        QCOMPARE(&homeIn(*openScreens().back()), &home);
        QCOMPARE(home.webToken, u"second"_s);

        host.press(Qt::Key_Escape);
        QCOMPARE(openScreens().size(), 1U);
        TRY_COMPARE(home.parentViewController(), openScreens().front().get());
        const auto above = std::make_shared<ViewController>();
        home.present(above, Animated::No); // by the container that is left
        QCOMPARE(openScreens().back(), above);
    }

    void withoutAWindowNothingIsShown()
    {
        const VLTranslationView early(QRectF(0, 0, 10, 10));
        VLTranslationView view;
        view.setUpTranslationScreen({}, config);
        settle();
        QVERIFY(openScreens().empty());

        QQuickWindow window;
        view.setUpTranslationScreen({}, config);
        view.setParentItem(window.contentItem()); // still in time
        settle();
        QCOMPARE(openScreens().size(), 1U);
        QCOMPARE(openScreens().front()->transition(), Animated::No);
    }

    void everyOrderOfEndsIsSafe_data()
    {
        addRows<QString, bool>({
            {"view, before its screens are shown", u"view"_s, false},
            {"view", u"view"_s, true},
            {"window, before its screens are shown", u"window"_s, false},
            {"window", u"window"_s, true},
            {"engine, before its screens are shown", u"engine"_s, false},
            {"engine", u"engine"_s, true},
        });
    }
    void everyOrderOfEndsIsSafe()
    {
        const auto [first, shown] = currentRow<QString, bool>();
        {
            Host host;
            QVERIFY(host.show());
            host.open();
            if (shown)
                TRY_VERIFY(!host.page()->isVisible());
            if (first == u"view") {
                delete host.view();
                settle();
                QCOMPARE(openScreens().size(), 1U); // the presentation keeps them
                TRY_VERIFY(!host.page()->isVisible());
                host.press(Qt::Key_Escape);
            } else if (first == u"window") {
                host.window.reset();
            } else {
                host.engine.reset();
                QVERIFY(!host.overlay() && host.page()->isVisible());
            }
            settle();
            QVERIFY(openScreens().empty() || first == u"engine");
        }
        Host again;
        QVERIFY(again.show());
        again.open();
        TRY_VERIFY(!again.page()->isVisible());
    }
};

QTEST_MAIN(tst_entry)
#include "tst_entry.moc"

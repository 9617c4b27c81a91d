#include "platform/ui/AlertController.h"
#include "platform/ui/NavigationController.h"
#include "platform/ui/ScreenWindow.h"
#include "platform/ui/Storyboard.h"
#include "platform/ui/ViewController.h"
#include "tests/fakes/CapturedConsole.h"
#include "tests/fakes/Patience.h"
#include "tests/fakes/Suite.h"

#include <QSignalSpy>
#include <QTest>

using namespace vynlex;
using namespace Qt::StringLiterals;

namespace {

class Screen : public ViewController {
public:
    int loads = 0;
    Task onGone;

    ~Screen() override
    {
        if (onGone)
            onGone();
    }

protected:
    void viewDidLoad() override { ++loads; }
};

} // namespace

class tst_presentation : public QObject {
    Q_OBJECT

private slots:
    void aScreenDismissesItselfFromItsOwnCallback()
    {
        const auto root = std::make_shared<Screen>();
        bool gone = false;
        auto *const screen = new Screen;
        screen->onGone = [&gone] { gone = true; };
        root->present(std::shared_ptr<ViewController>(screen), Animated::No);
        screen->dismiss(Animated::No);
        QVERIFY(!gone);                // the callback that dismissed it is still running
        screen->dismiss(Animated::No); // a second press does nothing
        TRY_VERIFY(gone);
    }

    void dismissingTakesEverythingAboveToo()
    {
        const auto root = std::make_shared<Screen>();
        const auto middle = std::make_shared<Screen>();
        std::weak_ptr<ViewController> top;
        root->present(middle, Animated::No);
        {
            auto screen = std::make_shared<Screen>();
            top = screen;
            middle->present(std::move(screen), Animated::Yes);
        }
        QCOMPARE(top.lock()->presentingViewController(), middle.get());
        ScreenWindow window(root);
        QCOMPARE(window.presentedChain().size(), 3U);

        root->dismiss(Animated::No);
        QCOMPARE(window.presentedChain().size(), 1U);

        // A screen with something above it takes that away first, not itself.
        root->present(middle, Animated::No);
        QCOMPARE(window.presentedChain().size(), 3U);
        middle->dismiss(Animated::No);
        QCOMPARE(window.presentedChain().size(), 2U);
        middle->dismiss(Animated::No);
        QCOMPARE(window.presentedChain().size(), 1U);
        TRY_VERIFY(top.expired());
    }

    void whatCannotBePresentedIsIgnored()
    {
        const auto root = std::make_shared<Screen>();
        const auto screen = std::make_shared<Screen>();
        const auto other = std::make_shared<Screen>();
        root->present(screen, Animated::No);
        root->present(other, Animated::No); // a second press of the button
        QCOMPARE(root->presentedViewController(), screen);
        other->present(screen, Animated::No); // shown elsewhere already
        QVERIFY(!other->presentedViewController());
        other->present(other, Animated::No);
        QVERIFY(!other->presentedViewController());
        other->dismiss(Animated::No); // not presented by anyone
        QCOMPARE(root->presentedViewController(), screen);
    }

    void aContainerPresentsForItsRoot()
    {
        const auto home = std::make_shared<Screen>();
        const auto host = std::make_shared<Screen>();
        auto navigation = std::make_shared<NavigationController>(home);
        host->present(navigation, Animated::No);
        QCOMPARE(home->loads, 1);
        QCOMPARE(&navigation->contentViewController(), home.get());

        const auto chat = std::make_shared<Screen>();
        home->present(chat, Animated::No);
        QCOMPARE(navigation->presentedViewController(), chat);
        QCOMPARE(home->presentedViewController(), chat);
        home->dismiss(Animated::No);
        QVERIFY(!navigation->presentedViewController());

        home->dismiss(Animated::No); // with nothing above it, the container itself goes
        QVERIFY(!host->presentedViewController());

        // The same root moves to a second container; the first one's end does not take it away from there.
        const auto second = std::make_shared<NavigationController>(home);
        navigation.reset();
        QCoreApplication::processEvents();
        QCOMPARE(home->parentViewController(), second.get());
    }

    void theTopMostScreenIsTheLastOfTheKeyWindowsChain()
    {
        const auto detached = topMostViewController();
        QVERIFY(detached);
        QVERIFY(topMostViewController() != detached); // no key window: a new screen each time

        {
            ScreenWindow window;
            window.makeKey();
            QVERIFY(topMostViewController()); // no root
            const auto root = std::make_shared<Screen>();
            window.setRootViewController(root);
            QCOMPARE(root->loads, 1);
            QCOMPARE(topMostViewController(), root);
            const auto presented = std::make_shared<Screen>();
            root->present(presented, Animated::No);
            QCOMPARE(topMostViewController(), presented);
        }
        QVERIFY(!ScreenWindow::key());
    }

    void anAlertGoesBeforeItsActionRuns()
    {
        const auto root = std::make_shared<Screen>();
        int pressed = 0;
        bool stillShown = true;
        const auto alert = std::make_shared<AlertController>(
            u"Alert"_s, u"Message"_s,
            std::vector<AlertAction>{{u"Ok"_s,
                                      [&] {
                                          ++pressed;
                                          stillShown = root->presentedViewController() != nullptr;
                                      }},
                                     {u"Cancel"_s, {}}});
        root->present(alert, Animated::Yes);
        QCOMPARE(alert->actionTitles(), QStringList({u"Ok"_s, u"Cancel"_s}));
        alert->didPressAction(2);
        alert->didPressAction(-1);
        QVERIFY(root->presentedViewController());

        alert->didPressAction(0);
        QCOMPARE(pressed, 1);
        QVERIFY(!stillShown);
        alert->didPressAction(0); // while it fades
        QCOMPARE(pressed, 1);

        root->present(alert, Animated::Yes);
        alert->didPressAction(1); // an action without a handler only closes
        QVERIFY(!root->presentedViewController());
    }

    void aStoryboardMakesANewScreenEachTime()
    {
        const Storyboard storyboard(u"Story"_s, {{u"Screen"_s, [] { return std::make_shared<Screen>(); }}});
        const auto first = storyboard.instantiateViewController(u"Screen"_s);
        QVERIFY(first);
        QVERIFY(storyboard.instantiateViewController(u"Screen"_s) != first);
        QCOMPARE(fatalErrorOf([&] { (void)storyboard.instantiateViewController(u"screen"_s); }),
                 u"Fatal error: The storyboard \"Story\" has no scene \"screen\"."_s);
    }
};

template struct vynlex::InSuite<tst_presentation>;

#include "tst_presentation.moc"

#include "platform/ui/ScreenHost.h"
#include "platform/ui/ScreenWindow.h"
#include "tests/fakes/Patience.h"

#include <QQmlEngine>
#include <QQuickWindow>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

using namespace vynlex;
using namespace Qt::StringLiterals;

namespace {

/// Counts the presses of its one button, and notes that its view was there to the end.
class PlainScreen : public ViewController {
    Q_OBJECT
    Q_PROPERTY(QString name READ name CONSTANT FINAL)

public:
    PlainScreen(QUrl view, QString name)
        : m_view(std::move(view))
        , m_name(std::move(name))
    {
    }

    [[nodiscard]] QUrl viewSource() const override { return m_view; }
    [[nodiscard]] QString name() const { return m_name; }

    Q_INVOKABLE void press()
    {
        ++presses;
        if (closesWhenPressed)
            dismiss(Animated::No);
    }

    int presses = 0;
    bool closesWhenPressed = false;

private:
    const QUrl m_view;
    const QString m_name;
};

constexpr auto viewText = R"(
import QtQuick
Item {
    id: root
    required property QtObject controller
    required property QtObject window
    objectName: controller.name
    Rectangle {
        objectName: "button"
        width: 100; height: 100
        activeFocusOnTab: true
        Keys.onSpacePressed: root.controller.press()
        TapHandler { onTapped: root.controller.press() }
    }
    Rectangle { y: 100; width: 100; height: 100; objectName: "second"; activeFocusOnTab: true }
}
)";

} // namespace

class tst_screen_host : public QObject {
    Q_OBJECT

    QTemporaryDir m_folder;
    QUrl m_view;

    [[nodiscard]] std::shared_ptr<PlainScreen> screen(const QString &name) const
    {
        return std::make_shared<PlainScreen>(m_view, name);
    }

private slots:
    void initTestCase()
    {
        QFile file(m_folder.filePath(u"View.qml"_s));
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write(viewText) > 0);
        m_view = QUrl::fromLocalFile(file.fileName());
    }

    void viewsFollowTheChainOfScreens()
    {
        QQmlEngine engine;
        QQuickWindow window;
        window.resize(390, 844);
        const auto root = screen(u"root"_s);
        ScreenWindow screens(root);
        ScreenHost host(engine, screens, window.contentItem());
        host.setSize({390, 844});

        const auto view = [&](const QString &name) { return findView(host, name); };
        QVERIFY(view(u"root"_s));
        QCOMPARE(view(u"root"_s)->size(), QSizeF(390, 844));

        const auto top = screen(u"top"_s);
        root->present(top, Animated::No);
        QVERIFY(view(u"top"_s) && view(u"top"_s)->isVisible());
        QVERIFY(!view(u"root"_s)->isVisible()); // wholly covered
        host.setSize({844, 390});
        QCOMPARE(view(u"top"_s)->size(), QSizeF(844, 390));

        const auto sheet = screen(u"sheet"_s);
        sheet->modalPresentationStyle = ViewController::ModalPresentationStyle::OverCurrentContext;
        top->present(sheet, Animated::No);
        QVERIFY(view(u"top"_s)->isVisible());

        root->dismiss(Animated::No);
        QVERIFY(view(u"root"_s)->isVisible());
        TRY_VERIFY(!view(u"top"_s) && !view(u"sheet"_s));
    }

    void whatIsCoveredGetsNoTouchAndNoKey()
    {
        QQmlEngine engine;
        QQuickWindow window;
        window.resize(390, 844);
        const auto root = screen(u"root"_s);
        ScreenWindow screens(root);
        ScreenHost host(engine, screens, window.contentItem());
        host.setSize({390, 844});
        window.show();
        QVERIFY(QTest::qWaitForWindowActive(&window, patienceMs));

        QTest::mouseClick(&window, Qt::LeftButton, {}, {50, 50});
        QCOMPARE(root->presses, 1);

        const auto alert = screen(u"alert"_s);
        alert->modalPresentationStyle = ViewController::ModalPresentationStyle::OverCurrentContext;
        root->present(alert, Animated::No);
        QTest::mouseClick(&window, Qt::LeftButton, {}, {50, 50});
        QTest::mouseClick(&window, Qt::LeftButton, {}, {50, 300}); // where the alert has nothing
        QCOMPARE(root->presses, 1);
        QCOMPARE(alert->presses, 1);

        // Round and round with the tab key: never down to what is covered, and back to the first control.
        int onAlertsButton = 0;
        for (int press = 0; press < 8; ++press) {
            QTest::keyClick(&window, Qt::Key_Tab);
            QVERIFY(findView(host, u"alert"_s)->isAncestorOf(window.activeFocusItem()));
            onAlertsButton += window.activeFocusItem()->objectName() == u"button"_s;
        }
        QVERIFY(onAlertsButton >= 2);
        root->dismiss(Animated::No);
        QTest::keyClick(&window, Qt::Key_Tab);
        QVERIFY(findView(host, u"root"_s)->isAncestorOf(window.activeFocusItem()));
    }

    void aViewGoesBeforeItsScreenEvenFromItsOwnButton()
    {
        QQmlEngine engine;
        QSignalSpy warnings(&engine, &QQmlEngine::warnings);
        QQuickWindow window;
        window.resize(390, 844);
        const auto root = screen(u"root"_s);
        ScreenWindow screens(root);
        ScreenHost host(engine, screens, window.contentItem());
        host.setSize({390, 844});
        window.show();
        QVERIFY(QTest::qWaitForWindowActive(&window, patienceMs));

        QStringList order;
        auto closing = screen(u"closing"_s);
        closing->closesWhenPressed = true;
        connect(closing.get(), &QObject::destroyed, this, [&] { order << u"screen"_s; });
        root->present(closing, Animated::No);
        connect(findView(host, u"closing"_s), &QObject::destroyed, this, [&] { order << u"view"_s; });
        closing.reset();

        QTest::mouseClick(&window, Qt::LeftButton, {}, {50, 50});
        TRY_COMPARE(order, QStringList({u"view"_s, u"screen"_s}));
        QCOMPARE(warnings.count(), 0);
        QCOMPARE(root->presses, 0);
    }

    void screensSlideInAndOut_data()
    {
        QTest::addColumn<ViewController::ModalTransitionStyle>("style");
        QTest::newRow("cover") << ViewController::ModalTransitionStyle::CoverVertical;
        QTest::newRow("push") << ViewController::ModalTransitionStyle::PushFromRight;
        QTest::newRow("dissolve") << ViewController::ModalTransitionStyle::CrossDissolve;
    }
    void screensSlideInAndOut()
    {
        QFETCH(ViewController::ModalTransitionStyle, style);
        QQmlEngine engine;
        QQuickWindow window;
        const auto root = screen(u"root"_s);
        ScreenWindow screens(root);
        ScreenHost host(engine, screens, window.contentItem());
        host.setSize({390, 844});
        const auto top = screen(u"top"_s);
        top->modalTransitionStyle = style;

        root->present(top, Animated::Yes);
        QVERIFY(host.isMoving());
        const QQuickItem *const stage = findView(host, u"top"_s)->parentItem();
        QCOMPARE(stage->x(), style == ViewController::ModalTransitionStyle::PushFromRight ? 390.0 : 0.0);
        QCOMPARE(stage->y(), style == ViewController::ModalTransitionStyle::CoverVertical ? 844.0 : 0.0);
        QCOMPARE(stage->opacity(), style == ViewController::ModalTransitionStyle::CrossDissolve ? 0.0 : 1.0);
        QVERIFY(findView(host, u"root"_s)->isVisible());
        TRY_VERIFY(!host.isMoving());
        QCOMPARE(stage->position(), QPointF());
        QCOMPARE(stage->opacity(), 1.0);
        QVERIFY(!findView(host, u"root"_s)->isVisible());

        root->dismiss(Animated::Yes);
        QVERIFY(host.isMoving());
        QVERIFY(findView(host, u"root"_s)->isVisible());
        root->present(top, Animated::Yes); // at once again, while the old view is still on its way out
        TRY_VERIFY(!host.isMoving());
        QVERIFY(findView(host, u"top"_s));
    }

    void theHostMayGoAtAnyTime()
    {
        QQmlEngine engine;
        QSignalSpy warnings(&engine, &QQmlEngine::warnings);
        QQuickWindow window;
        const auto root = screen(u"root"_s);
        ScreenWindow screens(root);
        {
            ScreenHost host(engine, screens, window.contentItem());
            root->present(screen(u"first"_s), Animated::Yes);
            root->dismiss(Animated::Yes);
            root->present(screen(u"second"_s), Animated::Yes);
        }
        root->dismiss(Animated::Yes);
        QCoreApplication::processEvents();
        QCOMPARE(warnings.count(), 0);
    }

private:
    static QQuickItem *findView(const QQuickItem &host, const QString &name)
    {
        // The newest first: one on its way out may have the same name.
        const auto stages = host.childItems();
        for (auto stage = stages.rbegin(); stage != stages.rend(); ++stage) {
            for (QQuickItem *view : (*stage)->childItems()) {
                if (view->objectName() == name)
                    return view;
            }
        }
        return nullptr;
    }
};

QTEST_MAIN(tst_screen_host)
#include "tst_screen_host.moc"

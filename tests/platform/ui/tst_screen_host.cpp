#include "platform/ui/ScreenHost.h"
#include "platform/ui/ScreenWindow.h"
#include "tests/fakes/Patience.h"
#include "tests/fakes/Suite.h"

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

/// A window with the screen "root" and all that is presented above it.
struct Stage {
    QQmlEngine engine;
    QSignalSpy warnings{&engine, &QQmlEngine::warnings};
    QQuickWindow window;
    std::shared_ptr<PlainScreen> root;
    ScreenWindow screens;
    ScreenHost host{engine, screens, window.contentItem()};

    explicit Stage(std::shared_ptr<PlainScreen> first)
        : root(std::move(first))
        , screens(root)
    {
        window.resize(390, 844);
        host.setSize({390, 844});
    }

    [[nodiscard]] QQuickItem *view(const QString &name) const
    {
        // The newest first: one on its way out may have the same name.
        const auto frames = host.childItems();
        for (auto frame = frames.rbegin(); frame != frames.rend(); ++frame) {
            for (QQuickItem *child : (*frame)->childItems()) {
                if (child->objectName() == name)
                    return child;
            }
        }
        return nullptr;
    }
    [[nodiscard]] bool show()
    {
        window.show();
        return QTest::qWaitForWindowActive(&window, patienceMs);
    }
};

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
        Stage stage(screen(u"root"_s));
        QVERIFY(stage.view(u"root"_s));
        QCOMPARE(stage.view(u"root"_s)->size(), QSizeF(390, 844));

        const auto top = screen(u"top"_s);
        stage.root->present(top, Animated::No);
        QVERIFY(stage.view(u"top"_s) && stage.view(u"top"_s)->isVisible());
        QVERIFY(!stage.view(u"root"_s)->isVisible()); // wholly covered
        stage.host.setSize({844, 390});
        QCOMPARE(stage.view(u"top"_s)->size(), QSizeF(844, 390));

        const auto sheet = screen(u"sheet"_s);
        sheet->modalPresentationStyle = ViewController::ModalPresentationStyle::OverCurrentContext;
        top->present(sheet, Animated::No);
        QVERIFY(stage.view(u"top"_s)->isVisible());

        stage.root->dismiss(Animated::No);
        QVERIFY(stage.view(u"root"_s)->isVisible());
        TRY_VERIFY(!stage.view(u"top"_s) && !stage.view(u"sheet"_s));
    }

    void whatIsCoveredGetsNoTouchAndNoKey()
    {
        Stage stage(screen(u"root"_s));
        QVERIFY(stage.show());

        QTest::mouseClick(&stage.window, Qt::LeftButton, {}, {50, 50});
        QCOMPARE(stage.root->presses, 1);

        const auto alert = screen(u"alert"_s);
        alert->modalPresentationStyle = ViewController::ModalPresentationStyle::OverCurrentContext;
        stage.root->present(alert, Animated::No);
        QTest::mouseClick(&stage.window, Qt::LeftButton, {}, {50, 50});
        QTest::mouseClick(&stage.window, Qt::LeftButton, {}, {50, 300}); // where the alert has nothing
        QCOMPARE(stage.root->presses, 1);
        QCOMPARE(alert->presses, 1);

        // Round and round with the tab key: never down to what is covered, and back to the first control.
        int onAlertsButton = 0;
        for (int press = 0; press < 8; ++press) {
            QTest::keyClick(&stage.window, Qt::Key_Tab);
            QVERIFY(stage.view(u"alert"_s)->isAncestorOf(stage.window.activeFocusItem()));
            onAlertsButton += stage.window.activeFocusItem()->objectName() == u"button"_s;
        }
        QVERIFY(onAlertsButton >= 2);
        stage.root->dismiss(Animated::No);
        QTest::keyClick(&stage.window, Qt::Key_Tab);
        QVERIFY(stage.view(u"root"_s)->isAncestorOf(stage.window.activeFocusItem()));
    }

    void aViewGoesBeforeItsScreenEvenFromItsOwnButton()
    {
        Stage stage(screen(u"root"_s));
        QVERIFY(stage.show());

        QStringList order;
        auto closing = screen(u"closing"_s);
        closing->closesWhenPressed = true;
        connect(closing.get(), &QObject::destroyed, this, [&] { order << u"screen"_s; });
        stage.root->present(closing, Animated::No);
        connect(stage.view(u"closing"_s), &QObject::destroyed, this, [&] { order << u"view"_s; });
        closing.reset();

        QTest::mouseClick(&stage.window, Qt::LeftButton, {}, {50, 50});
        TRY_COMPARE(order, QStringList({u"view"_s, u"screen"_s}));
        QCOMPARE(stage.warnings.count(), 0);
        QCOMPARE(stage.root->presses, 0);
    }

    void screensSlideInAndOut()
    {
        using Style = ViewController::ModalTransitionStyle;
        for (const Style style : {Style::CoverVertical, Style::PushFromRight, Style::CrossDissolve}) {
            Stage stage(screen(u"root"_s));
            const auto top = screen(u"top"_s);
            top->modalTransitionStyle = style;
            stage.root->present(top, Animated::Yes);
            QVERIFY(stage.host.isMoving() && stage.view(u"root"_s)->isVisible());
            const QQuickItem *const frame = stage.view(u"top"_s)->parentItem();
            QCOMPARE(frame->x(), style == Style::PushFromRight ? 390.0 : 0.0);
            QCOMPARE(frame->y(), style == Style::CoverVertical ? 844.0 : 0.0);
            QCOMPARE(frame->opacity(), style == Style::CrossDissolve ? 0.0 : 1.0);
            TRY_VERIFY(!stage.host.isMoving());
            QCOMPARE(frame->position(), QPointF());
            QCOMPARE(frame->opacity(), 1.0);
            QVERIFY(!stage.view(u"root"_s)->isVisible());

            stage.root->dismiss(Animated::Yes);
            QVERIFY(stage.host.isMoving() && stage.view(u"root"_s)->isVisible());
            stage.root->present(top, Animated::Yes); // at once again, while the old view is still on its way out
            TRY_VERIFY(!stage.host.isMoving());
            QVERIFY(stage.view(u"top"_s));
        }
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
};

template struct vynlex::InSuite<tst_screen_host>;

SUITE_MAIN(QGuiApplication)

#include "tst_screen_host.moc"

#include "language/LanguageTranslation.h"
#include "platform/ui/AlertController.h"
#include "platform/ui/KitFont.h"
#include "platform/ui/ScreenHost.h"
#include "platform/ui/ScreenWindow.h"
#include "tests/fakes/Patience.h"
#include "tests/fakes/Suite.h"
#include "tests/views/ViewProbe.h"

#include <QQmlComponent>
#include <QQmlEngine>
#include <QQuickItem>
#include <QQuickWindow>
#include <QTest>

#include <functional>
#include <memory>

using namespace Qt::StringLiterals;
using namespace vynlex;

class SharedViewsTest : public QObject {
    Q_OBJECT

    QQmlEngine m_engine;
    std::unique_ptr<QQuickWindow> m_window;

    /// Shows `body` with the kit's module imported, as large as the window.
    QQuickItem *show(const QByteArray &body)
    {
        QQmlComponent component(&m_engine);
        component.setData("import QtQuick\nimport VynlexTranslationSDK.Ui\n" + body, {});
        auto *const item = qobject_cast<QQuickItem *>(component.create());
        if (!item) {
            qWarning("%s", qPrintable(component.errorString()));
            return nullptr;
        }
        item->setParent(m_window.get());
        item->setParentItem(m_window->contentItem());
        return item;
    }

private slots:
    void init()
    {
        m_window = std::make_unique<QQuickWindow>();
        m_window->resize(390, 844);
        m_window->show();
        m_window->requestActivate();
        QVERIFY(QTest::qWaitForWindowActive(m_window.get(), patienceMs));
    }

    void cleanup()
    {
        m_window.reset();
        KitFont::shared().setScale(1);
    }

    void everyWayOfPressingAControlIsOnePress_data()
    {
        QTest::addColumn<QString>("way");
        for (const char *way : {"mouse", "finger", "space", "return", "assistive tool"})
            QTest::newRow(way) << QString::fromLatin1(way);
    }
    void everyWayOfPressingAControlIsOnePress()
    {
        QFETCH(QString, way);
        QQuickItem *const button =
            show("RoundButton { name: 'Swap'; picture: ''; property int presses: 0; onPressed: ++presses }");
        QVERIFY(button);
        const ViewProbe probe(*m_window);
        if (way == u"mouse")
            probe.click(*button);
        else if (way == u"finger")
            probe.tap(*button);
        else if (way == u"assistive tool")
            probe.pressByAssistiveTool(*button);
        else {
            QTest::keyClick(m_window.get(), Qt::Key_Tab);
            QVERIFY(button->hasActiveFocus());
            QTest::keyClick(m_window.get(), way == u"space" ? Qt::Key_Space : Qt::Key_Return);
        }
        QCOMPARE(button->property("presses").toInt(), 1);
    }

    void aPressThatLeavesTheControlIsNone()
    {
        QQuickItem *const button =
            show("RoundButton { name: 'Swap'; picture: ''; property int presses: 0; onPressed: ++presses }");
        QVERIFY(button);
        QTest::mousePress(m_window.get(), Qt::LeftButton, {}, {20, 20});
        QVERIFY(button->property("down").toBool());
        QTest::mouseMove(m_window.get(), {200, 300});
        QTest::mouseRelease(m_window.get(), Qt::LeftButton, {}, {200, 300});
        QCOMPARE(button->property("presses").toInt(), 0);

        QTest::keyClick(m_window.get(), Qt::Key_Tab);
        QTest::keyPress(m_window.get(), Qt::Key_Space);
        QVERIFY(button->property("down").toBool());
        QTest::keyClick(m_window.get(), Qt::Key_Tab);
        QTest::keyRelease(m_window.get(), Qt::Key_Space);
        QVERIFY(!button->property("down").toBool());
    }

    void twoPeoplePressAtTheSameTime()
    {
        QQuickItem *const both =
            show("Item { width: 390; height: 844; property string pressed\n"
                 "MicButton { name: 'a'; picture: ''; onPressed: parent.pressed += 'a' }\n"
                 "MicButton { y: 500; name: 'b'; picture: ''; onPressed: parent.pressed += 'b' } }");
        QVERIFY(both);
        auto *const fingers = QTest::createTouchDevice();
        QTest::touchEvent(m_window.get(), fingers).press(1, {30, 30}).press(2, {30, 530});
        QTest::touchEvent(m_window.get(), fingers).release(1, {30, 30}).stationary(2);
        QTest::touchEvent(m_window.get(), fingers).release(2, {30, 530});
        QCOMPARE(both->property("pressed").toString(), u"ab"_s);
    }

    void aMicrophoneThatIsNotAvailableTakesNoPressAndNoFocus()
    {
        QQuickItem *const mic = show("MicButton { name: 'Microphone'; picture: ''; available: false; property int "
                                     "presses: 0; onPressed: ++presses }");
        QVERIFY(mic);
        const ViewProbe probe(*m_window);
        probe.click(*mic);
        probe.pressByAssistiveTool(*mic);
        QTest::keyClick(m_window.get(), Qt::Key_Tab);
        QVERIFY(!mic->hasActiveFocus());
        QCOMPARE(mic->property("presses").toInt(), 0);
    }

    void whatIsSaidIsAsLargeAsItsRoomAllows_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<qreal>("scale");
        for (const LanguageOption option : allLanguageOptions) {
            for (const qreal scale : {1.0, 1.5, 2.0})
                QTest::addRow("%s x %g", qPrintable(rawValue(option)), scale)
                    << languageEntry(option).promptText << scale;
        }
    }
    void whatIsSaidIsAsLargeAsItsRoomAllows()
    {
        QFETCH(QString, text);
        QFETCH(qreal, scale);
        KitFont::shared().setScale(scale);
        QQuickItem *const speech = show("SpeechText { width: 334; height: 180; text: '' }");
        QVERIFY(speech);
        speech->setProperty("text", text);
        QVERIFY2(!speech->property("scrolls").toBool(), "a short text has to fit");
        const int roomy = speech->property("size").toInt();
        QVERIFY(roomy * scale >= 20);
        speech->setProperty("text", QString(text + u' ').repeated(4));
        QVERIFY(speech->property("size").toInt() <= roomy);
        QCOMPARE(ViewProbe(*m_window).faults(), QStringList());

        // Half of the smallest phone.
        QQuickItem *const prompt = show("SpeechText { y: 400; width: 272; height: 83; text: ''; prompt: true }");
        QVERIFY(prompt);
        prompt->setProperty("text", text);
        QVERIFY2(!prompt->property("scrolls").toBool(), "a prompt has to fit");
    }

    void aLongTextScrollsByFingerAndByKeyboardAndStartsAtItsTop()
    {
        QQuickItem *const speech = show("SpeechText { width: 334; height: 180; text: '' }");
        QVERIFY(speech);
        speech->setProperty("text", u"Where is the railway station, please? "_s.repeated(30));
        QVERIFY(speech->property("scrolls").toBool());
        QCOMPARE(ViewProbe(*m_window).faults(), QStringList());

        QQuickItem *const words = ViewProbe(*m_window).showing(speech->property("text").toString());
        QVERIFY(words);
        const auto top = [&] { return words->mapToItem(speech, QPointF()).y(); };
        QCOMPARE(top(), 0.0);
        QTest::keyClick(m_window.get(), Qt::Key_Tab);
        QTest::keyClick(m_window.get(), Qt::Key_Down);
        TRY_VERIFY(top() < -20);

        speech->setProperty("text", u"And where is the bus? "_s.repeated(30));
        TRY_COMPARE(top(), 0.0);

        QTest::mousePress(m_window.get(), Qt::LeftButton, {}, {150, 150});
        for (int y = 150; y > 40; y -= 10)
            QTest::mouseMove(m_window.get(), {150, y});
        QTest::mouseRelease(m_window.get(), Qt::LeftButton, {}, {150, 40});
        TRY_VERIFY(top() < -20);
    }

    void anAlertSaysItsMessageAndGoesWhenAnswered()
    {
        const QSize size(844, 390);
        KitFont::shared().setScale(1.5);
        m_window->resize(size);
        const auto root = std::make_shared<ViewController>();
        ScreenWindow screens(root);
        ScreenHost host(m_engine, screens, m_window->contentItem());
        host.setSize(size);
        int answered = 0;
        const QString message = u"సంభాషణను ప్రారంభించడానికి మైక్ నొక్కండి"_s;
        const auto ask = [&] {
            root->present(std::make_shared<AlertController>(u"Alert"_s, message,
                                                            std::vector<AlertAction>{{u"Ok"_s, [&] { ++answered; }}}),
                          Animated::No);
        };
        const ViewProbe probe(*m_window);

        ask();
        TRY_VERIFY(probe.showing(u"Alert"_s)); // texts have no height before the first frame
        QVERIFY(probe.showing(message));
        QCOMPARE(probe.faults(), QStringList());
        const auto key = [this](Qt::Key code) { QTest::keyClick(m_window.get(), code); };
        const std::function<void()> ways[] = {[&] { probe.click(*probe.named(u"Ok"_s)); }, [&] { key(Qt::Key_Return); },
                                              [&] { key(Qt::Key_Escape); },
                                              [&] { key(Qt::Key_Tab), key(Qt::Key_Space); }};
        for (const auto &way : ways) {
            TRY_VERIFY(probe.named(u"Ok"_s));
            const int before = answered;
            way();
            QCOMPARE(answered, before + 1);
            TRY_VERIFY(!probe.named(u"Ok"_s) && !probe.showing(message));
            ask();
        }
    }
};

template struct vynlex::InSuite<SharedViewsTest>;

SUITE_MAIN(QGuiApplication)

#include "tst_shared_views.moc"

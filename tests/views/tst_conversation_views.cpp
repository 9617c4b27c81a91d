#include "tests/fakes/Patience.h"
#include "tests/fakes/Rows.h"
#include "tests/fakes/Suite.h"
#include "tests/views/ConversationStage.h"

#include <QAccessible>
#include <QQuickItem>
#include <QTest>

#include <algorithm>

using namespace Qt::StringLiterals;
using namespace vynlex;

namespace {

const QString question = u"Where is the railway station, please?"_s;
const QString englishPrompt = u"Press mic to begin conversation"_s;
const QString hindiPrompt = u"बातचीत शुरू करने के लिए माइक दबाएं"_s;

QAccessible::State stateOf(QQuickItem *item)
{
    return QAccessible::queryAccessibleInterface(item)->state();
}

} // namespace

class ConversationViewsTest : public QObject {
    Q_OBJECT

    const DeviceShape &m_phone = deviceShapes().front();

    static void drag(QQuickWindow &window, QPoint from, int by)
    {
        QTest::mousePress(&window, Qt::LeftButton, {}, from);
        for (int step = 1; step <= 20; ++step)
            QTest::mouseMove(&window, from + QPoint(0, by * step / 20));
        QTest::mouseRelease(&window, Qt::LeftButton, {}, from + QPoint(0, by));
    }

private slots:
    void everyMomentIsWithoutFaultOnEveryDevice_data()
    {
        QTest::addColumn<const DeviceShape *>("shape");
        QTest::addColumn<const Scene<ConversationStage> *>("moment");
        for (const DeviceShape &shape : deviceShapes()) {
            for (const Scene<ConversationStage> &moment : ConversationStage::scenes())
                QTest::addRow("%s, %s", qPrintable(shape.name), qPrintable(moment.name)) << &shape << &moment;
        }
    }
    void everyMomentIsWithoutFaultOnEveryDevice()
    {
        QFETCH(const DeviceShape *, shape);
        QFETCH(const Scene<ConversationStage> *, moment);
        ConversationStage stage(*shape);
        QVERIFY(moment->play(stage));
        QCOMPARE(stage.probe.faults(), QStringList());

        const QRectF safe = QRectF(QPointF(), shape->size).marginsRemoved(shape->safeArea);
        for (const QString &name : stage.probe.controlNames()) {
            QQuickItem *const control = stage.probe.named(name);
            if (!name.startsWith(u"English") &&
                control->mapRectToScene(control->boundingRect()).bottom() < shape->size.height())
                QVERIFY2(safe.contains(control->mapRectToScene(control->boundingRect())), qPrintable(name));
        }
    }

    void theFourLooksAreToldApartWithoutColour()
    {
        std::vector<Look> looks;
        for (const char *name :
             {"fresh", "speaker-listening", "being-translated", "translated", "speaker-reading-aloud"}) {
            ConversationStage stage(m_phone);
            QVERIFY(sceneNamed<ConversationStage>(QString::fromLatin1(name)).play(stage));
            QTest::qWait(500); // a moment into the movement that is part of a look
            looks.push_back({QString::fromLatin1(name), inGrey(stage.window, {0, 462, 390, 382})}); // the lower half
        }
        const QStringList alike = lookAlike(looks);
        QVERIFY2(alike.isEmpty(), qPrintable(alike.join(u"\n"_s)));
    }

    void theUpperHalfFacesThePersonOpposite()
    {
        ConversationStage stage(m_phone);
        QQuickItem *const theirs = stage.probe.showing(hindiPrompt);
        QQuickItem *const ours = stage.probe.showing(englishPrompt);
        QVERIFY(theirs && ours);
        const auto points = [](QQuickItem *text) {
            return text->mapToScene({0, 0}) - text->mapToScene({text->width(), text->height()});
        };
        QVERIFY(points(ours).x() < 0 && points(ours).y() < 0);
        QVERIFY(points(theirs).x() > 0 && points(theirs).y() > 0);
        QVERIFY(theirs->mapToScene({0, 0}).y() < ours->mapToScene({0, 0}).y());
    }

    void twoPeopleConverseByTouch()
    {
        ConversationStage stage(m_phone);
        QVERIFY(stage.listen(Side::Speaker));
        QVERIFY(stage.probe.named(u"Stop listening, Speaker"_s));
        QVERIFY(stateOf(stage.probe.named(u"Stop listening, Speaker"_s)).checked);
        QVERIFY(stage.press(u"Microphone off, Listener"_s));
        QCOMPARE(stage.screen->listenerState(), ConversationTranslateVC::SideState::Idle);
        QVERIFY(stage.press(u"Stop listening, Speaker"_s));
        QCOMPARE(stage.screen->speakerState(), ConversationTranslateVC::SideState::Idle);

        QVERIFY(stage.say(Side::Speaker, question));
        QVERIFY(stage.probe.showing(question));
        stage.translate(u"रेलवे स्टेशन कहाँ है?"_s);
        QVERIFY(stage.probe.showing(u"रेलवे स्टेशन कहाँ है?"_s));

        QVERIFY(stage.press(u"Read aloud, Listener"_s));
        TRY_COMPARE(stage.platform.speechService->utteranceCount(), 1);
        QVERIFY(stage.probe.named(u"Stop reading aloud, Listener"_s));
        stage.platform.speechService->lastUtterance().complete();
        TRY_VERIFY(stage.probe.named(u"Read aloud, Listener"_s));

        QVERIFY(stage.press(u"Swap the languages"_s));
        QVERIFY(stage.probe.named(u"Speaker language: हिंदी"_s));
        QVERIFY(stage.probe.named(u"Listener language: English"_s));
    }

    void everyControlIsReachedAndUsedByKeyboardAlone()
    {
        ConversationStage stage(m_phone);
        QStringList reached;
        for (qsizetype tabs = stage.probe.controlNames().size(); tabs > 0; --tabs)
            reached.append(stage.pressKey(Qt::Key_Tab));
        QStringList all = stage.probe.controlNames();
        std::ranges::sort(all);
        std::ranges::sort(reached);
        QCOMPARE(reached, all);

        while (stage.window.activeFocusItem() != stage.probe.named(u"Listener language: हिंदी"_s))
            QTest::keyClick(&stage.window, Qt::Key_Tab);
        QTest::keyClick(&stage.window, Qt::Key_Space);
        QVERIFY(stage.settle());
        // In the picker the keys stay in the picker.
        for (int tabs = 0; tabs < 20; ++tabs) {
            QTest::keyClick(&stage.window, Qt::Key_Tab);
            QVERIFY(stage.probe.named(u"Translate to"_s)->isAncestorOf(stage.window.activeFocusItem()));
        }
        while (stage.window.activeFocusItem() != stage.probe.named(u"हिंदी"_s))
            QTest::keyClick(&stage.window, Qt::Key_Tab);
        QTest::keyClick(&stage.window, Qt::Key_Down);
        QTest::keyClick(&stage.window, Qt::Key_Return);
        QCOMPARE(stage.languages.language(Side::Listener), LanguageOption::gujarati);
        QTest::keyClick(&stage.window, Qt::Key_Escape);
        stage.platform.clock->advance(spring::duration);
        QVERIFY(!stage.screen->languageSelectionView());
        QVERIFY(stage.probe.named(u"Listener language: ગુજરાતી"_s));
        QTest::keyClick(&stage.window, Qt::Key_Escape);
        TRY_VERIFY(!stage.root->presentedViewController());
    }

    void thePickerMarksAndTakesAChoice()
    {
        ConversationStage stage(m_phone);
        QVERIFY(sceneNamed<ConversationStage>(u"picker-to"_s).play(stage));
        QVERIFY(stateOf(stage.probe.named(u"हिंदी"_s)).checked);
        QVERIFY(!stateOf(stage.probe.named(u"తెలుగు"_s)).checked);
        QVERIFY(stage.press(u"తెలుగు"_s));
        QVERIFY(stateOf(stage.probe.named(u"తెలుగు"_s)).checked);
        QVERIFY(!stateOf(stage.probe.named(u"हिंदी"_s)).checked);
        QVERIFY(stage.probe.showing(u"సంభాషణను ప్రారంభించడానికి మైక్ నొక్కండి"_s));
    }

    void whatIsCoveredIsOutOfReachAndNotReadOut_data()
    {
        addRows<QString, QString>(
            {{"by the picker", u"picker-to"_s, u"తెలుగు"_s}, {"by an alert", u"alert"_s, u"Ok"_s}});
    }
    void whatIsCoveredIsOutOfReachAndNotReadOut()
    {
        const auto [moment, above] = currentRow<QString, QString>();
        ConversationStage stage(m_phone);
        QQuickItem *const microphone = stage.probe.named(u"Microphone, Speaker"_s);
        QVERIFY(sceneNamed<ConversationStage>(moment).play(stage));
        QVERIFY(stage.probe.heard().contains(above));
        for (const char *name : {"Back", "Speaker", "Microphone, Speaker", "Press mic to begin conversation"})
            QCOMPARE(stage.probe.heard().count(QString::fromLatin1(name)),
                     moment == u"alert" && name[0] == 'P' ? 1 : 0);
        QVERIFY(!stage.probe.controlNames().contains(u"Back"_s));
        stage.probe.pressByAssistiveTool(*microphone);
        QCOMPARE(stage.screen->speakerState(), ConversationTranslateVC::SideState::Idle);
    }

    void theInformationScrollsByKeyboard()
    {
        ConversationStage stage({u"small phone, huge type"_s, {320, 568}, 2});
        QVERIFY(sceneNamed<ConversationStage>(u"information"_s).play(stage));
        QQuickItem *const last = stage.probe.showing(u"Choose and swap languages"_s);
        const auto bottom = [&] { return last->mapToScene({0, last->height()}).y(); };
        QVERIFY(last && bottom() > 568);
        for (const Qt::Key key : {Qt::Key_Down, Qt::Key_PageDown, Qt::Key_End})
            QTest::keyClick(&stage.window, key);
        TRY_VERIFY(bottom() < 568);
        QTest::keyClick(&stage.window, Qt::Key_Home);
        TRY_VERIFY(bottom() > 568);
    }

    void thePickerGoesWhenTheDimmedScreenIsTapped()
    {
        ConversationStage stage(m_phone);
        QVERIFY(sceneNamed<ConversationStage>(u"picker-from"_s).play(stage));
        QTest::mouseClick(&stage.window, Qt::LeftButton, {},
                          stage.probe.showing(u"Translate from"_s)->mapToScene({5, 5}).toPoint());
        QVERIFY(
            stage.screen->languageSelectionView()->isShown()); // beside the sheet's controls is not beside the sheet
        QTest::mouseClick(&stage.window, Qt::LeftButton, {}, {195, 100});
        QVERIFY(!stage.screen->languageSelectionView()->isShown());
        stage.platform.clock->advance(spring::duration);
        QVERIFY(!stage.probe.named(u"Translate from"_s));
        QVERIFY(stage.probe.controlNames().contains(u"Back"_s));
    }

    void thePickerFollowsTheFingerAndClosesWhenDraggedHalfway_data()
    {
        addRows<int, bool>({{"up", -200, false}, {"a little", 120, false}, {"most of it", 320, true}});
    }
    void thePickerFollowsTheFingerAndClosesWhenDraggedHalfway()
    {
        const auto [by, closes] = currentRow<int, bool>();
        ConversationStage stage(m_phone);
        QVERIFY(sceneNamed<ConversationStage>(u"picker-from"_s).play(stage));
        QQuickItem *const row = stage.probe.named(u"मराठी"_s);
        const QPoint grip = row->mapToScene(row->boundingRect().center()).toPoint();
        drag(stage.window, grip, by);
        QCOMPARE(stage.screen->languageSelectionView()->isShown(), !closes);
        QCOMPARE(stage.languages.language(Side::Speaker), LanguageOption::english); // a drag is no press
        QVERIFY(stage.settle());
        if (!closes)
            QCOMPARE(row->mapToScene(row->boundingRect().center()).toPoint(), grip);
    }
};

template struct vynlex::InSuite<ConversationViewsTest>;
#include "tst_conversation_views.moc"

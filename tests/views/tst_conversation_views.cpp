#include "tests/fakes/Patience.h"
#include "tests/fakes/Rows.h"
#include "tests/fakes/Suite.h"
#include "tests/views/ConversationStage.h"

#include <QQuickItem>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace vynlex;

namespace {

const QString englishPrompt = u"Press mic to begin conversation"_s;
const QString hindiPrompt = u"बातचीत शुरू करने के लिए माइक दबाएं"_s;

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
        QVERIFY(play(stage, moment));
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
        QVERIFY(play(stage, u"information"_s));
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
        QVERIFY(play(stage, u"picker-from"_s));
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
        QVERIFY(play(stage, u"picker-from"_s));
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

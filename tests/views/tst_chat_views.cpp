#include "tests/fakes/Patience.h"
#include "tests/fakes/Rows.h"
#include "tests/fakes/Suite.h"
#include "tests/views/ChatStage.h"

#include <QQuickItem>
#include <QRegularExpression>
#include <QTest>

#include <algorithm>

using namespace Qt::StringLiterals;
using namespace vynlex;

namespace {

/// Where a control begins, in points of the window.
qreal top(const ChatStage &stage, const QString &name)
{
    QQuickItem *const control = stage.probe.named(name);
    return control ? control->mapToScene({0, 0}).y() : -1;
}

/// Whether an assistive tool comes by the messages as they stand below each other.
bool isReadInOrder(const ChatStage &stage)
{
    QStringList rows = stage.probe.heard().filter(QRegularExpression(u"^Play, "_s));
    return rows.size() > 5 && std::ranges::is_sorted(rows, {}, [&](const QString &row) { return top(stage, row); });
}

} // namespace

class ChatViewsTest : public QObject {
    Q_OBJECT

    const DeviceShape &m_phone = deviceShapes().front();

private slots:
    void everyMomentIsWithoutFaultOnEveryDevice_data()
    {
        QTest::addColumn<const DeviceShape *>("shape");
        QTest::addColumn<const Scene<ChatStage> *>("moment");
        for (const DeviceShape &shape : deviceShapes()) {
            for (const Scene<ChatStage> &moment : ChatStage::scenes())
                QTest::addRow("%s, %s", qPrintable(shape.name), qPrintable(moment.name)) << &shape << &moment;
        }
    }
    void everyMomentIsWithoutFaultOnEveryDevice()
    {
        QFETCH(const DeviceShape *, shape);
        QFETCH(const Scene<ChatStage> *, moment);
        ChatStage stage(*shape);
        QVERIFY(moment->play(stage));
        QStringList faults = stage.probe.faults();
        if (moment->name == u"chat-long-names")
            faults.removeAll(u"cut off: "_s + stage.screen->userModel.name);
        QVERIFY2(faults.isEmpty(), qPrintable(faults.join(u"\n"_s)));

        const QRectF safe = QRectF(QPointF(), shape->size).marginsRemoved(shape->safeArea);
        for (const char *name : {"Back", "Voice Chat", "Text message", "Stop recording", "Discard the recording",
                                 "Play the recording", "Send the message", "New message, show it"}) {
            QQuickItem *const control = stage.probe.named(QString::fromLatin1(name));
            QVERIFY2(!control || safe.contains(control->mapRectToScene(control->boundingRect())), name);
        }
    }

    void theStatesAreToldApartWithoutColour()
    {
        std::vector<Look> looks;
        for (const char *name : {"idle", "recording", "stopped", "previewing", "sending", "playing"}) {
            ChatStage stage(m_phone);
            QVERIFY(sceneNamed<ChatStage>(u"chat-"_s + QString::fromLatin1(name)).play(stage));
            looks.push_back({QString::fromLatin1(name), inGrey(stage.window, {0, 540, 390, 300})});
        }
        const QStringList alike = lookAlike(looks);
        QVERIFY2(alike.isEmpty(), qPrintable(alike.join(u"\n"_s)));
    }

    void aVoiceMessageByTouch()
    {
        ChatStage stage(m_phone);
        QVERIFY(stage.load(20));
        QVERIFY(stage.recordAndStop(65));
        QVERIFY(stage.probe.showing(u" 1:05"_s));
        QVERIFY(stage.press(u"Discard the recording"_s));
        QCOMPARE(stage.screen->panelState(), ChatVC::PanelState::Idle);

        QVERIFY(stage.record(3));
        QVERIFY(stage.probe.showing(u" 0:03"_s));
        QVERIFY(!stage.probe.controlNames().contains(u"Text message"_s));
        QVERIFY(!stage.probe.controlNames().contains(u"Recording"_s)); // It shows; there is nothing to press.
        QVERIFY(stage.platform.speechService->lastRecognition().deliverRecognized(u"hello there"_s));
        QVERIFY(stage.press(u"Stop recording"_s));
        QVERIFY(stage.press(u"Play the recording"_s));
        QVERIFY(stage.press(u"Stop playing the recording"_s));

        // Who reads older messages sees the own one all the same.
        stage.probe.drag({195, 300}, {0, 300});
        const int before = stage.platform.network->requestCount();
        QVERIFY(stage.press(u"Send the message"_s));
        QVERIFY(stage.probe.named(u"Being sent"_s));
        QCOMPARE(stage.platform.network->requestCount(), before + 1);
        QVERIFY(stage.platform.network->answer(
            before, 200,
            R"({"_id":"sent","threadId":"thread","createdBy":"me","cOn":"2026-01-31T10:01:00.000+0000"})"));
        QCOMPARE(stage.screen->panelState(), ChatVC::PanelState::Idle);
        TRY_VERIFY(stage.isInSight(ChatStage::playName(20)));
    }

    void theNewestMessageIsShownToWhoSeesTheNewest()
    {
        ChatStage stage(m_phone);
        QVERIFY(stage.load(150));
        TRY_VERIFY(stage.isInSight(ChatStage::playName(149)));
        stage.receive();
        TRY_VERIFY(stage.isInSight(ChatStage::playName(150, u"Asha Rao"_s)));
        for (int message = 0; message < 30; ++message)
            stage.sent();
        TRY_VERIFY(stage.isInSight(ChatStage::playName(180)));
        QVERIFY(!stage.probe.named(u"New message, show it"_s));

        stage.resize({390, 600});
        TRY_VERIFY(stage.isInSight(ChatStage::playName(180)));
    }

    void whoReadsOlderMessagesKeepsThePlace_data()
    {
        addRows<QString>({{"finger", u"finger"_s}, {"keyboard", u"keyboard"_s}});
    }
    void whoReadsOlderMessagesKeepsThePlace()
    {
        const auto [way] = currentRow<QString>();
        ChatStage stage(m_phone);
        const auto key = [&](Qt::Key code) { QTest::keyClick(&stage.window, code); };
        QVERIFY(stage.load(150));
        TRY_VERIFY(stage.isInSight(ChatStage::playName(149)));
        if (way == u"finger") {
            stage.probe.drag({195, 300}, {0, 300});
            QTest::qWait(1500); // flicked, it goes on for a moment
        } else {
            key(Qt::Key_Tab), key(Qt::Key_Tab);
            for (int row = 0; row < 15; ++row)
                key(Qt::Key_Up);
            QCOMPARE(stage.window.activeFocusItem(), stage.probe.named(ChatStage::playName(134)));
        }
        QVERIFY(stage.probe.named(ChatStage::playName(135)));
        TRY_VERIFY(isReadInOrder(stage));
        const qreal place = top(stage, ChatStage::playName(135));
        stage.receive();
        TRY_VERIFY(stage.probe.named(u"New message, show it"_s));
        QCOMPARE(top(stage, ChatStage::playName(135)), place);

        if (way == u"finger")
            QVERIFY(stage.press(u"New message, show it"_s));
        else
            key(Qt::Key_Tab), key(Qt::Key_Space);
        TRY_VERIFY(stage.isInSight(ChatStage::playName(150, u"Asha Rao"_s)));
        QVERIFY(!stage.probe.named(u"New message, show it"_s));
    }

    void whileOneMessageIsReadTheOthersTakeNoTouches()
    {
        ChatStage stage(m_phone);
        QVERIFY(stage.talk(2));
        QQuickItem *const other = stage.probe.named(ChatStage::playName(3));
        QVERIFY(stage.press(ChatStage::playName(2, u"Asha Rao"_s)));
        TRY_COMPARE(stage.platform.speechService->utteranceCount(), 1);
        const QString stop = u"Stop playing, Asha Rao, "_s + ChatStage::time(2);
        QVERIFY(stage.probe.named(stop));
        stage.probe.tap(*other);
        stage.probe.pressByAssistiveTool(*other);
        QVERIFY(stage.probe.named(stop));
        QCOMPARE(stage.platform.speechService->utteranceCount(), 1);

        QVERIFY(stage.press(stop));
        QVERIFY(stage.probe.named(ChatStage::playName(2, u"Asha Rao"_s)));
        QVERIFY(stage.press(ChatStage::playName(3)));
        QQuickItem *const bubble = stage.probe.named(u"You, "_s + ChatStage::time(3)); // the row beside its button
        stage.probe.tap(*bubble);
        QVERIFY(stage.probe.named(ChatStage::playName(3)));
    }

    void everythingIsReachedAndUsedByKeyboardAlone()
    {
        ChatStage stage(m_phone);
        QVERIFY(stage.load(20));
        TRY_VERIFY(stage.isInSight(ChatStage::playName(19)));
        const auto key = [&](Qt::Key code) { return stage.pressKey(code); };
        QCOMPARE(key(Qt::Key_Tab), u"Back"_s);
        QCOMPARE(key(Qt::Key_Tab), ChatStage::playName(19));
        QCOMPARE(key(Qt::Key_Up), ChatStage::playName(18));
        QCOMPARE(key(Qt::Key_Space), u"Stop playing, You, "_s + ChatStage::time(18));
        QCOMPARE(key(Qt::Key_Return), ChatStage::playName(18));
        QCOMPARE(key(Qt::Key_Tab), u"Voice Chat"_s);
        QCOMPARE(key(Qt::Key_Tab), u"Text message"_s);
        QCOMPARE(key(Qt::Key_Backtab), u"Voice Chat"_s);
        // The keys stay where the controls change.
        QCOMPARE(key(Qt::Key_Space), u"Stop recording"_s);
        QCOMPARE(key(Qt::Key_Space), u"Send the message"_s);
        QCOMPARE(key(Qt::Key_Backtab), u"Play the recording"_s);
        QCOMPARE(key(Qt::Key_Backtab), u"Discard the recording"_s);
        QCOMPARE(key(Qt::Key_Space), u"Voice Chat"_s);
        QTest::keyClick(&stage.window, Qt::Key_Escape);
        TRY_VERIFY(!stage.root->presentedViewController());
    }

    void aLongChatHasNoMoreCellsThanAShortOne()
    {
        const auto cells = [&](int messages) {
            ChatStage stage(m_phone);
            [&] { QVERIFY(stage.load(messages)); }();
            [&] { TRY_VERIFY(stage.isInSight(ChatStage::playName(messages - 1))); }();
            return std::ranges::count_if(stage.probe.controlNames(),
                                         [](const QString &name) { return name.startsWith(u"Play, "); });
        };
        const auto ofAPage = cells(150);
        QVERIFY(ofAPage > 5);
        QVERIFY(cells(10'000) <= ofAPage);
    }
};

template struct vynlex::InSuite<ChatViewsTest>;
#include "tst_chat_views.moc"

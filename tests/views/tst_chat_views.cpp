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
    void whoReadsOlderMessagesSeesTheOwnOneAllTheSame()
    {
        ChatStage stage(m_phone);
        QVERIFY(stage.load(20) && stage.recordAndStop(65));
        stage.probe.drag({195, 300}, {0, 300});
        const int before = stage.platform.network->requestCount();
        QVERIFY(stage.press(u"Send the message"_s));
        QVERIFY(stage.platform.network->answer(
            before, 200,
            R"({"_id":"sent","threadId":"thread","createdBy":"me","cOn":"2026-01-31T10:01:00.000+0000"})"));
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

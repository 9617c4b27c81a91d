#include "platform/ui/NavigationController.h"
#include "screens/ChatVC.h"
#include "tests/fakes/Patience.h"
#include "tests/fakes/Rows.h"
#include "tests/fakes/Suite.h"
#include "tests/views/HomeStage.h"

#include <QQuickItem>
#include <QTest>

#include <algorithm>

using namespace Qt::StringLiterals;
using namespace vynlex;

class HomeViewsTest : public QObject {
    Q_OBJECT

    const DeviceShape &m_phone = deviceShapes().front();

private slots:
    void everyMomentIsWithoutFaultOnEveryDevice_data()
    {
        QTest::addColumn<DeviceShape>("shape");
        QTest::addColumn<const Scene<HomeStage> *>("moment");
        std::vector<DeviceShape> shapes = deviceShapes();
        shapes.push_back({u"small phone, lying"_s, {568, 320}, 1, {}});
        for (const DeviceShape &shape : shapes) {
            for (const Scene<HomeStage> &moment : HomeStage::scenes())
                QTest::addRow("%s, %s", qPrintable(shape.name), qPrintable(moment.name)) << shape << &moment;
        }
    }
    void everyMomentIsWithoutFaultOnEveryDevice()
    {
        QFETCH(DeviceShape, shape);
        QFETCH(const Scene<HomeStage> *, moment);
        HomeStage stage(shape);
        QVERIFY(moment->play(stage));
        QStringList faults = stage.probe.faults();
        if (moment->name == u"home-long-names")
            faults.removeIf([](const QString &fault) { return fault.startsWith(u"cut off: Venkata"_s); });
        QVERIFY2(faults.isEmpty(), qPrintable(faults.join(u"\n"_s)));

        const QRectF safe = QRectF(QPointF(), shape.size).marginsRemoved(shape.safeArea);
        for (const char *name : {"Notifications", "Choose your language", "Contacts", "Recent", "Search",
                                 "Clear the search", "Translate a conversation"}) {
            QQuickItem *const control = stage.probe.named(QString::fromLatin1(name));
            QVERIFY2(!control || safe.contains(control->mapRectToScene(control->boundingRect())), name);
        }
    }

    void whatIsTypedIsSearchedForUntilItIsCleared_data()
    {
        addRows<QString, QStringList>({{"escape", u"key"_s, {u"Asha Rao"_s, u"Brian Fernandes"_s}},
                                       {"the cross", u"Clear the search"_s, {u"Asha Rao"_s, u"Brian Fernandes"_s}},
                                       {"the other tab", u"Contacts"_s, {}}});
    }
    void whatIsTypedIsSearchedForUntilItIsCleared()
    {
        const auto [way, left] = currentRow<QString, QStringList>();
        HomeStage stage(m_phone);
        QVERIFY(stage.showRecents(2));
        QVERIFY(stage.searchFor(u"br"_s));
        TRY_COMPARE(stage.people(), QStringList(u"Brian Fernandes"_s));
        QTest::keyClick(&stage.window, Qt::Key_Backspace);
        stage.type(u"zz"_s);
        TRY_COMPARE(stage.people(), QStringList());

        if (way == u"key")
            QTest::keyClick(&stage.window, Qt::Key_Escape);
        else
            QVERIFY(stage.press(way));
        QCOMPARE(stage.screen->searchBarText(), QString());
        QCOMPARE(stage.probe.named(u"Search"_s)->property("text").toString(), QString());
        if (way == u"Contacts") {
            QVERIFY(!stage.isEditing());
            QVERIFY(stage.platform.network->answer(stage.platform.network->requestCount() - 1, 200, "{}"));
        } else {
            QVERIFY(stage.isEditing());
            QTest::keyClick(&stage.window, Qt::Key_Escape);
            QVERIFY(!stage.isEditing());
        }
        TRY_COMPARE(stage.people(), left);
    }

    void aTouchBesideTheControlsPutsTheKeyboardAway_data()
    {
        addRows<QPoint>({{"a tap", {}}, {"the list is dragged", {0, -100}}});
    }
    void aTouchBesideTheControlsPutsTheKeyboardAway()
    {
        const auto [by] = currentRow<QPoint>();
        HomeStage stage(m_phone);
        QVERIFY(stage.showRecents(9));
        QVERIFY(stage.searchFor(u"a"_s));
        stage.probe.drag({150, 500}, by);
        TRY_VERIFY(!stage.isEditing());
        QCOMPARE(stage.screen->searchBarText(), u"a"_s);
    }

    void bothButtonsOfARowOpenTheChatWithItsPerson_data()
    {
        addRows<QString>({{"call", u"Call, Brian Fernandes"_s}, {"voice", u"Voice, Brian Fernandes"_s}});
    }
    void bothButtonsOfARowOpenTheChatWithItsPerson()
    {
        const auto [button] = currentRow<QString>();
        HomeStage stage(m_phone);
        QVERIFY(stage.showRecents(9));
        QVERIFY(stage.searchFor(u"brian"_s)); // the row is not the one of the whole list
        QVERIFY(stage.press(button));
        TRY_VERIFY(stage.probe.named(u"Voice chat with Brian Fernandes"_s));
        QVERIFY(stage.settle());
        QVERIFY(stage.press(u"Back"_s));
        TRY_COMPARE(stage.people(), QStringList(u"Brian Fernandes"_s));
    }

    void thePictureLeadsToTheConversation()
    {
        HomeStage stage(m_phone);
        QVERIFY(stage.press(u"Translate a conversation"_s));
        TRY_VERIFY(stage.probe.named(u"Swap the languages"_s));
    }

    void everythingIsReachedAndUsedByKeyboardAlone()
    {
        HomeStage stage(m_phone);
        QVERIFY(stage.showRecents(9));
        const auto key = [&](Qt::Key code) { return stage.pressKey(code); };
        QCOMPARE(key(Qt::Key_Tab), u"Notifications"_s);
        QCOMPARE(key(Qt::Key_Tab), u"Choose your language"_s);
        QCOMPARE(key(Qt::Key_Tab), u"Contacts"_s);
        QCOMPARE(key(Qt::Key_Right), u"Recent"_s);
        QCOMPARE(key(Qt::Key_Tab), u"Search"_s);
        QCOMPARE(key(Qt::Key_Tab), u"Call, Asha Rao"_s);
        QCOMPARE(key(Qt::Key_Tab), u"Voice, Asha Rao"_s);
        QCOMPARE(key(Qt::Key_Down), u"Voice, Brian Fernandes"_s);
        for (int row = 0; row < 5; ++row)
            key(Qt::Key_Down);
        QCOMPARE(key(Qt::Key_Left), u"Call, Gita Patel"_s);
        QCOMPARE(key(Qt::Key_Up), u"Call, Farhan Qureshi"_s);
        QVERIFY(stage.people().contains(u"Farhan Qureshi"_s)); // scrolled into sight
        QCOMPARE(key(Qt::Key_Tab), u"Voice, Farhan Qureshi"_s);
        QCOMPARE(key(Qt::Key_Tab), u"Translate a conversation"_s);
        QCOMPARE(key(Qt::Key_Backtab), u"Voice, Farhan Qureshi"_s);

        stage.probe.named(u"Choose your language"_s)->forceActiveFocus();
        key(Qt::Key_Space);
        QVERIFY(stage.settle());
        QVERIFY(stage.probe.named(u"Translate from"_s));
        key(Qt::Key_Escape);
        stage.platform.clock->advance(spring::duration);
        TRY_VERIFY(!stage.screen->languageSelectionView());
        QCOMPARE(key(Qt::Key_Tab), u"Contacts"_s); // the keys are back where they were
    }

    void aLongListHasNoMoreRowsThanAShortOne()
    {
        HomeStage stage(m_phone);
        QVERIFY(stage.showRecents(20));
        TRY_VERIFY(stage.people().size() > 3);
        const qsizetype few = stage.people().size();
        QVERIFY(stage.showRecents(10'000));
        TRY_COMPARE(stage.people().size(), few);
    }
};

template struct vynlex::InSuite<HomeViewsTest>;
#include "tst_home_views.moc"

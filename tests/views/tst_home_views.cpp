#include "tests/fakes/Patience.h"
#include "tests/fakes/Rows.h"
#include "tests/fakes/Suite.h"
#include "tests/views/HomeStage.h"

#include <QQuickItem>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace vynlex;

class HomeViewsTest : public QObject {
    Q_OBJECT

    const DeviceShape &m_phone = deviceShapes().front();

private slots:
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

#include "screens/UserList.h"
#include "screens/UserTable.h"
#include "tests/fakes/Rows.h"
#include "tests/fakes/Suite.h"

#include <QColor>
#include <QTest>

using namespace vynlex;
using namespace Qt::StringLiterals;

namespace {

UserList people(const QStringList &names)
{
    std::vector<User> users;
    for (const QString &name : names)
        users.push_back({{}, name, {}, u"1"_s});
    return UserList(std::move(users));
}

} // namespace

class tst_user_list : public QObject {
    Q_OBJECT

private slots:
    void namesAreFound_data()
    {
        using Places = std::vector<int>;
        addRows<QStringList, QString, Places>({
            {"anywhere, in any case", {u"Anna"_s, u"Bob"_s, u"BRIAN"_s}, u"aN"_s, Places{0, 2}},
            {"once each", {u"Anan an"_s, u"an"_s}, u"an"_s, Places{0, 1}},
            {"by blanks too", {u"Asha "_s, u"Asha"_s, u"A sha"_s}, u"a "_s, Places{0, 2}},
            {"in other scripts", {u"आशा राव"_s, u"Čeněk"_s}, u"ČE"_s, Places{1}},
            {"however a letter is put together",
             {u"Rene\u0301"_s, u"\u0958\u093e\u0926\u093f\u0930"_s},
             u"N\u00c9"_s,
             Places{0}},
        });
    }
    void namesAreFound()
    {
        const auto [names, text, places] = currentRow<QStringList, QString, std::vector<int>>();
        QCOMPARE(people(names).placesOfNamesWith(text), places);
    }

    void aRowKeepsItsColourUntilTheTableIsReloaded()
    {
        const auto users = std::make_shared<const UserList>(people({u"Asha Rao"_s, u"Bob"_s}));
        UserTable table;
        const auto colours = [&] {
            QList<QVariant> all;
            for (int row = 0; row < table.rowCount(); ++row)
                all << table.data(table.index(row), table.roleNames().key("initialsColor"));
            return all;
        };
        table.reload(users);
        const QList<QVariant> first = colours();
        QCOMPARE(colours(), first);
        QVERIFY(first[0] != first[1]);
        table.reload(users, std::vector{1, 0});
        QCOMPARE(table.userAt(0)->name, u"Bob"_s);
        QVERIFY(!colours().contains(first[0]) && !colours().contains(first[1]));
    }
};

template struct vynlex::InSuite<tst_user_list>;

#include "tst_user_list.moc"

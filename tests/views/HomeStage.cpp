#include "tests/views/HomeStage.h"
#include "tests/fakes/Secrets.h"

#include <QQuickItem>
#include <QTest>

#include <algorithm>

#include "tests/fakes/Patience.h"

using namespace Qt::StringLiterals;

namespace vynlex {
namespace {

const QStringList friends{u"Asha Rao"_s,   u"Brian Fernandes"_s, u"Charu Mehta"_s,
                          u"Dev Anand"_s,  u"Esther D'Souza"_s,  u"Farhan Qureshi"_s,
                          u"Gita Patel"_s, u"Hari Krishna"_s,    u"Ishaan Bose"_s};

const QStringList inEveryScript{u"आशा राव"_s,        u"ઐશ્વર્યા પટેલ"_s,   u"श्रीकृष्ण कुलकर्णी"_s,
                                u"রবীন্দ্রনাথ ঠাকুর"_s, u"వేంకట సుబ్బారావు"_s, u"Ágnes Őry"_s};

bool showsNote(HomeStage &stage, const QString &words)
{
    return eventually([&] {
        QQuickItem *const note = stage.probe.showing(words);
        return note && qFuzzyCompare(note->parentItem()->opacity(), 1);
    });
}

QString number(int person)
{
    return person % 5 == 4 ? QString() : u"+91 98765 %1"_s.arg(43210 + person);
}

} // namespace

HomeStage::HomeStage(const DeviceShape &shape)
    : ScreenStage(shape)
    , chat(api)
    , sockets(chat)
    , screen(std::make_shared<HomeVC>(api, languages, sockets))
{
    api.setCredentials(u"me"_s, secrets::jwt);
    root->present(screen, Animated::No);
}

HomeStage::~HomeStage()
{
    clear();
}

bool HomeStage::showRecents(const QStringList &names)
{
    const QString call = u"{\"userId\":\"user %1\",\"ownerName\":\"%2\",\"ownerPhoneNo\":\"%3\"}"_s;
    QByteArrayList calls;
    for (int person = 0; person < names.size(); ++person)
        calls << call.arg(person).arg(names[person], number(person)).toUtf8();
    return press(u"Recent"_s) &&
           platform.network->answer(platform.network->requestCount() - 1, 200,
                                    R"({"totalCount":1,"moreAvailable":false,"callHistory":[)" + calls.join(',') +
                                        "]}") &&
           eventually([&] {
               return screen->tableView()->rowCount() == names.size() && !screen->isActivityIndicatorAnimating();
           });
}

bool HomeStage::showRecents(int people)
{
    QStringList names;
    for (int person = 0; person < people; ++person)
        names << friends[person % friends.size()];
    return showRecents(names);
}

bool HomeStage::showContacts(const QStringList &names)
{
    std::vector<AddressBookContact> contacts;
    for (const QString &name : names)
        contacts.push_back({name, {}, {number(static_cast<int>(contacts.size()))}});
    platform.contactStore->setContacts(contacts);
    screen->loadData();
    return eventually([&] { // until the address book has been read
        return press(u"Contacts"_s) &&
               platform.network->answer(platform.network->requestCount() - 1, 200, R"({"contacts":[]})") &&
               eventually([&] { return !screen->isActivityIndicatorAnimating(); }) &&
               screen->tableView()->rowCount() == names.size();
    });
}

bool HomeStage::searchFor(const QString &text)
{
    QQuickItem *const field = probe.named(u"Search"_s);
    if (!field)
        return false;
    probe.click(*field);
    type(text);
    return isEditing();
}

void HomeStage::type(const QString &text)
{
    for (const QChar letter : text)
        QTest::keyClick(&window, letter.toLatin1());
}

bool HomeStage::isEditing() const
{
    const QQuickItem *const field = window.activeFocusItem();
    return field && field->inherits("QQuickTextInput");
}

QStringList HomeStage::people() const
{
    constexpr auto call = "Call, "_L1;
    QStringList names;
    for (const QString &name : probe.heard()) {
        if (name.startsWith(call))
            names << name.sliced(call.size());
    }
    return names;
}

const std::vector<Scene<HomeStage>> &HomeStage::scenes()
{
    static const std::vector<Scene<HomeStage>> scenes{
        {u"home-recents"_s, [](auto &stage) { return stage.showRecents(9); }},
        {u"home-contacts"_s, [](auto &stage) { return stage.showContacts(friends); }},
        {u"home-searching"_s, [](auto &stage) { return stage.showRecents(9) && stage.searchFor(u"an"_s); }},
        {u"home-nothing-found"_s,
         [](auto &stage) {
             return stage.showRecents(9) && stage.searchFor(u"zoe"_s) && showsNote(stage, u"Nobody found for “zoe”"_s);
         }},
        {u"home-no-recents"_s,
         [](auto &stage) { return stage.showRecents(0) && showsNote(stage, u"No recent calls yet"_s); }},
        {u"home-no-contacts"_s,
         [](auto &stage) { return stage.showContacts({}) && showsNote(stage, u"No contacts with a phone number"_s); }},
        {u"home-loading"_s,
         [](auto &stage) {
             return stage.showRecents(9) && stage.press(u"Recent"_s) &&
                    eventually([&] { return stage.screen->isActivityIndicatorAnimating(); });
         }},
        {u"home-not-signed-up"_s,
         [](auto &stage) { return stage.showContacts(friends) && stage.press(u"Call, Asha Rao"_s) && stage.settle(); }},
        {u"home-picker"_s,
         [](auto &stage) { return stage.showRecents(9) && stage.press(u"Choose your language"_s) && stage.settle(); }},
        {u"home-indic-names"_s, [](auto &stage) { return stage.showRecents(inEveryScript); }},
        {u"home-long-names"_s, [](auto &stage) { return stage.showRecents(QStringList(9, longName)); }},
        {u"home-by-keyboard"_s,
         [](auto &stage) {
             if (!stage.showRecents(9) || !stage.searchFor({}))
                 return false;
             for (const Qt::Key key : {Qt::Key_Down, Qt::Key_Down, Qt::Key_Right})
                 QTest::keyClick(&stage.window, key);
             return true;
         }},
    };
    return scenes;
}

} // namespace vynlex

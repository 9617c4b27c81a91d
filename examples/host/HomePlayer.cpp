#include "HomePlayer.h"

#include "api/VLApiManager.h"
#include "screens/ChatVC.h"
#include "screens/HomeVC.h"

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using namespace vynlex;

namespace host {
namespace {

/// The kit tells the backend of the address book this long after it was asked for; and a little more.
constexpr auto untilContactsAreTold = 700ms;
constexpr int mostVisits = 3;

} // namespace

HomePlayer::HomePlayer(Props &props)
    : m_stage(props.stage)
    , m_hand(props.hand)
{
}

void HomePlayer::openKit()
{
    m_hand.press(u"Open VynTranslate"_s);
    awaitHome();
}

void HomePlayer::awaitHome()
{
    m_hand.await(u"Translate a conversation"_s, QAccessible::Button);
    if (m_stage.user().webToken.isEmpty())
        return;
    awaitPeople();
    letPass(untilContactsAreTold);
    m_hand.await(u"The end of the backend's work on the contacts"_s,
                 [this] { return !m_hand.sees(u"Loading"_s, QAccessible::ProgressBar); });
    m_stage.settle();
}

void HomePlayer::leaveKit()
{
    m_hand.press(Qt::Key_Back);
    m_hand.await(u"Open VynTranslate"_s, QAccessible::Button);
    m_stage.settle();
}

void HomePlayer::openContacts()
{
    openTab(u"Contacts"_s);
}

void HomePlayer::openRecents()
{
    openTab(u"Recent"_s);
}

void HomePlayer::openTab(const QString &name)
{
    m_hand.await(u"The home screen"_s, [this] { return m_stage.screen<HomeVC>() != nullptr; });
    if (!m_hand.isAtWork())
        return;
    // Until they are there the table goes on showing those of the other tab.
    bool areNew = false;
    const auto watch = QObject::connect(m_stage.screen<HomeVC>()->tableView(), &QAbstractItemModel::modelReset,
                                        [&areNew] { areNew = true; });
    m_hand.press(name, QAccessible::PageTab);
    m_hand.await(u"The people of the tab \"%1\""_s.arg(name), [&areNew] { return areNew; });
    QObject::disconnect(watch);
    awaitPeople();
    m_stage.settle();
}

void HomePlayer::awaitPeople()
{
    m_hand.await(u"The home screen's people"_s, [this] {
        auto *const home = m_stage.screen<HomeVC>();
        return home && home->tableView()->rowCount() > 0 && !home->isActivityIndicatorAnimating();
    });
}

void HomePlayer::searchFor(const QString &text)
{
    if (m_hand.sees(u"Clear the search"_s))
        clearSearch();
    m_hand.press(u"Search"_s, QAccessible::EditableText);
    m_hand.type(text);
    m_stage.settle();
}

void HomePlayer::clearSearch()
{
    m_hand.press(u"Clear the search"_s);
    m_stage.settle();
}

void HomePlayer::openConversation()
{
    m_hand.press(u"Translate a conversation"_s);
    m_hand.await(u"Swap the languages"_s, QAccessible::Button);
    m_stage.settle();
}

void HomePlayer::openChat(const QString &name)
{
    const auto isThere = [this] { return m_stage.screen<ChatVC>() != nullptr; };
    for (int visit = 0; visit < mostVisits && m_hand.isAtWork() && !isThere(); ++visit) {
        openContacts();
        searchFor(name);
        m_hand.press(u"Voice, "_s + name);
        m_hand.await(u"An answer to that press"_s, [&] { return isThere() || m_hand.sees(u"Ok"_s); });
        if (isThere() || !m_hand.isAtWork())
            break;
        // On a slow machine the kit tells the backend of the address book before it has been read to its end. The next
        // visit tells it again.
        m_hand.press(u"Ok"_s);
        openRecents();
        leaveKit();
        openKit();
    }
    m_hand.await(u"The chat with "_s + name, isThere);
    m_stage.settle();
}

} // namespace host

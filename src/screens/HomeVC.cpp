#include "screens/HomeVC.h"

#include <algorithm>
#include <iterator>

#include "api/JwtUserId.h"
#include "api/PhoneNumber.h"
#include "api/VLApiManager.h"
#include "chat/ChatViewModel.h"
#include "chat/SocketManager.h"
#include "conversation/TranslationStoryboard.h"
#include "language/LanguageTranslation.h"
#include "platform/device/Platform.h"
#include "platform/dispatch/Console.h"
#include "platform/dispatch/GlobalQueue.h"
#include "platform/dispatch/Guarded.h"
#include "platform/dispatch/MainQueue.h"
#include "platform/ui/AlertController.h"
#include "platform/ui/Color.h"
#include "platform/ui/NavigationController.h"
#include "platform/ui/ResourceBundle.h"
#include "platform/ui/ViewSource.h"
#include "screens/ChatVC.h"

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace vynlex {
namespace {

constexpr auto contactSyncDelay = 500ms;
constexpr qint64 mostRecents = 200;
constexpr int mostContacts = 1000; ///< What the backend gives at most in one answer.

/// One a number. A contact without a family name keeps the blank behind the given one: deliberate.
void addUsersOf(const AddressBookContact &contact, std::vector<User> &users)
{
    const QString name = contact.givenName + u' ' + contact.familyName;
    for (const QString &number : contact.phoneNumbers)
        users.push_back({{}, name, {}, number});
}

/// As the Contacts tab shows them. The blank goes before a last name that they do not have: deliberate.
std::vector<User> withFullNames(std::vector<User> users)
{
    for (User &user : users)
        user.name += u' ' + user.lname;
    return users;
}

/// The owners of the calls, in the order of the calls; of calls that tell all of an owner's id, name and number.
std::vector<User> ownersOf(const std::vector<CallHistory> &calls)
{
    std::vector<User> owners;
    for (const CallHistory &call : calls) {
        if (call.userId && call.ownerName && call.ownerPhoneNo)
            owners.push_back({*call.userId, *call.ownerName, {}, *call.ownerPhoneNo});
    }
    return owners;
}

} // namespace

HomeVC::HomeVC()
    : HomeVC(VLApiManager::shared(), LanguageTranslation::shared(), SocketManager::shared())
{
}

HomeVC::HomeVC(VLApiManager &apiManager, LanguageTranslation &languages, SocketManager &socketManager)
    : m_apiManager(apiManager)
    , m_languages(languages)
    , m_socketManager(socketManager)
    , m_users(std::make_shared<const UserList>())
    , m_languagePicker(languages)
{
    using enum ButtonState::Appearance;
    headerTitleLabel->setText(u"VynTranslate"_s);
    headerTitleLabel->setTextColor(Qt::white);
    notificationButton->setImage(ResourceBundle::image(u"notify_icon"_s), Normal);
    translateButton->setImage(ResourceBundle::image(u"translate_icon"_s), Normal);
    contactsButton->setTitle(u"Contacts"_s);
    recentsButton->setTitle(u"Recent"_s);
    applyTabColors();
    connect(&m_languagePicker, &LanguagePicker::viewChanged, this, &HomeVC::languageSelectionViewChanged);
}

HomeVC::~HomeVC() = default;

QUrl HomeVC::viewSource() const
{
    return viewInModule(u"Screens"_s, u"HomeVC"_s);
}

QUrl HomeVC::transitionImageView()
{
    return ResourceBundle::image(u"home_bottom_transition"_s);
}

void HomeVC::viewDidLoad()
{
    startSocketSession();
}

// --- The user's session

void HomeVC::fetchJWToken(std::function<void()> completion)
{
    m_apiManager.getJWToken(webToken, m_lifetime.guard([this, asked = webToken, completion = std::move(completion)](
                                                           const VLApiResult<VLTokenResponse> &answer) {
        if (!answer || !answer->jwt)
            return; // Nobody is told, deliberately.
        if (webToken != asked)
            return; // The host has another user by now, whom an answer that took its time must not sign out.
        signIn(*answer->jwt);
        completion();
    }));
}

void HomeVC::signIn(const QString &jwt)
{
    if (m_apiManager.setCredentials(userIdOfJwt(jwt), jwt))
        forgetFormerUser();
    // The screen may have loaded before the token was there. Its socket has logged in with none, or as somebody else,
    // and would never be sent a message.
    if (isViewLoaded())
        startSocketSession();
}

/// What the backend has told. The address book stays: it is the device's.
void HomeVC::forgetFormerUser()
{
    m_serverContactArray.clear();
    setUsers({});
    m_socketManager.chat().forgetChat();
}

void HomeVC::startSocketSession()
{
    m_socketManager.webSocketManager =
        std::make_unique<VLWebSocketManager>(m_apiManager.currentEnv, m_apiManager.currentJWT);
    m_socketManager.start();
}

void HomeVC::loadData()
{
    fetchDeviceContacts();
    fetchRecents();
}

// --- The device's contacts

void HomeVC::fetchDeviceContacts()
{
    const auto platform = Platform::current();
    platform->contactStore->requestAccess(m_lifetime.guard([this, contactStore = platform->contactStore](bool granted) {
        if (granted)
            readDeviceContacts(contactStore);
        else
            consoleLine(u"Access to contacts denied."_s);
    }));
    // Waits neither for the user's permission nor for the address book, deliberately: what has been read by then is
    // told, be it a part or nothing.
    m_contactSyncs.push_back(platform->clock->after(contactSyncDelay, [this] { syncContacts(); }));
}

void HomeVC::readDeviceContacts(const std::shared_ptr<ContactStore> &contactStore)
{
    // What was read and has not come to the main thread yet, which empties it as often as it gets to.
    const auto arriving = std::make_shared<Guarded<std::vector<User>>>();
    const Task collect = m_lifetime.guard(
        [this, arriving] { std::ranges::move(arriving->exchange({}), std::back_inserter(m_contactsArray)); });

    GlobalQueue::async([contactStore, arriving, collect] {
        const auto outcome = contactStore->enumerateContacts([&](const AddressBookContact &contact) {
            const bool nobodyCollects = arriving->with([&](std::vector<User> &users) {
                const bool wasEmpty = users.empty();
                addUsersOf(contact, users);
                return wasEmpty && !users.empty();
            });
            if (nobodyCollects)
                MainQueue::async(collect);
        });
        if (!outcome)
            consoleLine("Error fetching contacts: "_L1 + outcome.error());
    });
}

void HomeVC::syncContacts()
{
    setActivityIndicatorAnimating(true);
    m_apiManager.uploadContacts(m_contactsArray, m_lifetime.guard([this](const VLApiResult<VLSuccessResponse> &) {
        setActivityIndicatorAnimating(false); // Whether it went well changes nothing.
    }));
}

// --- Tabs

void HomeVC::contactsButtonTapped()
{
    activateTab(Tab::Contacts);
    fetchContacts();
}

void HomeVC::recentsButtonTapped()
{
    activateTab(Tab::Recents);
    fetchRecents();
}

void HomeVC::activateTab(Tab tab)
{
    m_activeTab = tab;
    applyTabColors();
    m_isSearching = false;
    setSearchBarText({});
    emit searchBarResignsFirstResponder();
    emit activeTabChanged();
}

void HomeVC::applyTabColors()
{
    const QColor blue = colorFromHex(u"0F3CC9");
    ButtonState *const active = isRecentsActive() ? recentsButton : contactsButton;
    ButtonState *const other = isRecentsActive() ? contactsButton : recentsButton;
    active->setTitleColor(Qt::white);
    active->setBackgroundColor(blue);
    other->setTitleColor(blue);
    other->setBackgroundColor(Qt::transparent);
}

void HomeVC::fetchContacts()
{
    const VLQueryParameters firstPage{{u"offset"_s, 0}, {u"limit"_s, mostContacts}};
    m_apiManager.getContacts(firstPage, m_lifetime.guard([this](VLApiResult<VLContactsResponse> answer) {
        setActivityIndicatorAnimating(false);
        if (!answer)
            return;
        m_serverContactArray = std::move(answer->contacts).value_or(std::vector<Contact>());
        if (isContactsActive()) // or the list would come onto the other tab
            setUsers(withFullNames(m_contactsArray));
    }));
}

void HomeVC::fetchRecents()
{
    setActivityIndicatorAnimating(true);
    m_users = std::make_shared<const UserList>(); // The table keeps its rows until there are others.
    m_apiManager.getRecentContacts(
        u"one_to_one_call,group_call"_s, 0, mostRecents,
        m_lifetime.guard([this, fetch = ++m_recentsFetch](const VLApiResult<VLRecentContactsResponse> &answer) {
            setActivityIndicatorAnimating(false);
            if (answer && isRecentsActive() && fetch == m_recentsFetch)
                setUsers(ownersOf(answer->callHistory));
        }));
}

void HomeVC::setUsers(std::vector<User> users)
{
    m_users = std::make_shared<const UserList>(std::move(users));
    MainQueue::async(m_lifetime.guard([this] { reloadTable(); }));
}

void HomeVC::reloadTable()
{
    if (m_isSearching)
        m_tableView.reload(m_users, m_users->placesOfNamesWith(m_searchTextValue));
    else
        m_tableView.reload(m_users);
}

// --- Search

void HomeVC::searchBarTextDidChange(const QString &text)
{
    consoleLine("Current search text: "_L1 + text);
    setSearchBarText(text);
    m_searchTextValue = text;
    m_isSearching = !text.isEmpty();
    reloadTable();
}

void HomeVC::searchBarSearchButtonClicked()
{
    // What it would search for has been found with the last letter.
}

void HomeVC::searchBarCancelButtonClicked()
{
    // The table goes on showing what was found, deliberately, until the next letter or a tab.
    setSearchBarText({});
    emit searchBarResignsFirstResponder();
}

void HomeVC::setSearchBarText(const QString &text)
{
    if (m_searchBarText == text)
        return;
    m_searchBarText = text;
    emit searchBarTextChanged();
}

// --- Other screens

void HomeVC::callButtonTapped(int row)
{
    openChat(row);
}

void HomeVC::voiceButtonTapped(int row)
{
    openChat(row);
}

void HomeVC::openChat(int row)
{
    // Whom the user sees there, also while another list is under way.
    const User *const user = m_tableView.userAt(row);
    if (!user)
        return;
    if (isRecentsActive()) {
        // Without an id it is a contact, whose row is about to go. With whom would one chat?
        if (!user->id.isEmpty())
            presentChat(*user);
        return;
    }
    const Contact *const contact = contactWithNumber(m_serverContactArray, user->phoneNumber);
    if (!contact)
        presentError(u"User is not signed up on Confera"_s);
    else if (contact->id == m_apiManager.currentUserGuestID)
        presentError(u"Can't send message to self"_s);
    else
        presentChat({contact->id.value_or(QString()), user->name, user->lname, user->phoneNumber});
}

void HomeVC::presentChat(const User &user)
{
    const auto chat = std::make_shared<ChatVC>(m_socketManager.chat(), m_apiManager, m_languages);
    chat->userModel = user;
    chat->modalPresentationStyle = ModalPresentationStyle::FullScreen;
    const auto navigation = std::make_shared<NavigationController>(chat);
    navigation->modalPresentationStyle = ModalPresentationStyle::FullScreen;
    present(navigation, Animated::Yes);
}

void HomeVC::presentError(const QString &message)
{
    present(std::make_shared<AlertController>(u"Error"_s, message, std::vector<AlertAction>{{u"Ok"_s, {}}}),
            Animated::Yes);
}

void HomeVC::translateLanguageButtonTapped()
{
    present(translationStoryboard().instantiateViewController(u"ConversationTranslateVC"_s), Animated::Yes);
}

void HomeVC::didPressLanguageButtonTapped()
{
    m_languagePicker.open(Side::Speaker);
}

void HomeVC::setActivityIndicatorAnimating(bool animating)
{
    MainQueue::async(m_lifetime.guard([this, animating] {
        if (m_activityIndicatorAnimating == animating)
            return;
        m_activityIndicatorAnimating = animating;
        emit activityIndicatorAnimatingChanged();
    }));
}

} // namespace vynlex

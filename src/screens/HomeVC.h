#pragma once

#include <QAbstractItemModel>
#include <QUrl>

#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

#include "api/DirectoryRecords.h"
#include "conversation/LanguagePicker.h"
#include "platform/dispatch/Clock.h"
#include "platform/dispatch/Lifetime.h"
#include "platform/ui/ButtonState.h"
#include "platform/ui/LabelState.h"
#include "platform/ui/ViewController.h"
#include "screens/UserTable.h"

namespace vynlex {

class ContactStore;
class LanguageTranslation;
class SocketManager;
class VLApiManager;

/// The kit's first screen: the device's contacts and the recent calls, and from there the conversation screen and the
/// voice chats.
///
/// Main thread. Failures of the backend are silent: the table stays as it is. Failures of the address book are console
/// lines. What is still answered when the screen is gone reaches nobody.
///
/// Loading the screen opens the chat's socket with the token of that time, and a token that comes later opens it anew;
/// the socket outlives the screen.
class HomeVC : public ViewController {
    Q_OBJECT
    QML_NAMED_ELEMENT(HomeController)
    QML_UNCREATABLE("Screens are made by the kit.")

    Q_PROPERTY(vynlex::LabelState *headerTitleLabel MEMBER headerTitleLabel CONSTANT FINAL)
    Q_PROPERTY(vynlex::ButtonState *notificationButton MEMBER notificationButton CONSTANT FINAL)
    Q_PROPERTY(vynlex::ButtonState *translateButton MEMBER translateButton CONSTANT FINAL)
    Q_PROPERTY(vynlex::ButtonState *translateLanguageButton MEMBER translateLanguageButton CONSTANT FINAL)
    Q_PROPERTY(vynlex::ButtonState *contactsButton MEMBER contactsButton CONSTANT FINAL)
    Q_PROPERTY(vynlex::ButtonState *recentsButton MEMBER recentsButton CONSTANT FINAL)
    Q_PROPERTY(QAbstractItemModel *tableView READ tableView CONSTANT FINAL)
    Q_PROPERTY(QString searchBarText READ searchBarText NOTIFY searchBarTextChanged FINAL)
    Q_PROPERTY(bool activityIndicatorAnimating READ isActivityIndicatorAnimating NOTIFY
                   activityIndicatorAnimatingChanged FINAL)
    Q_PROPERTY(QUrl transitionImageView READ transitionImageView CONSTANT FINAL)
    Q_PROPERTY(vynlex::LanguageSelectionView *languageSelectionView READ languageSelectionView NOTIFY
                   languageSelectionViewChanged FINAL)
    Q_PROPERTY(bool isRecentsActive READ isRecentsActive NOTIFY activeTabChanged FINAL)
    Q_PROPERTY(bool isContactsActive READ isContactsActive NOTIFY activeTabChanged FINAL)

public:
    /// With the shared instances and the current platform.
    HomeVC();
    /// All three must outlive the screen.
    HomeVC(VLApiManager &apiManager, LanguageTranslation &languages, SocketManager &socketManager);
    ~HomeVC() override;

    QString webToken; ///< The host's; set before `fetchJWToken`.

    LabelState *const headerTitleLabel = new LabelState(this);
    ButtonState *const notificationButton = new ButtonState(this); ///< Nothing follows from a press.
    ButtonState *const translateButton = new ButtonState(this);    ///< Opens the language picker.
    /// Without a title or an image of its own: it lies over `transitionImageView` and opens the conversation screen.
    ButtonState *const translateLanguageButton = new ButtonState(this);
    ButtonState *const contactsButton = new ButtonState(this);
    ButtonState *const recentsButton = new ButtonState(this);

    /// Exchanges `webToken` for the backend's JSON web token and hands that, with the user id in it, to the API
    /// manager. `completion` runs when this has gone well, else never; nor does it when `webToken` is another by then.
    void fetchJWToken(std::function<void()> completion);
    /// Fetches the device's contacts, which are told the backend 0.5 s later, and the recent calls.
    void loadData();

    Q_INVOKABLE void contactsButtonTapped();
    Q_INVOKABLE void recentsButtonTapped();
    /// The user has typed, or cleared, what the bar shows now. Not for texts that `searchBarText` brings.
    Q_INVOKABLE void searchBarTextDidChange(const QString &text);
    Q_INVOKABLE void searchBarSearchButtonClicked();
    Q_INVOKABLE void searchBarCancelButtonClicked();
    /// Both buttons of a row open the voice chat with its person.
    Q_INVOKABLE void callButtonTapped(int row);
    Q_INVOKABLE void voiceButtonTapped(int row);
    Q_INVOKABLE void translateLanguageButtonTapped();
    Q_INVOKABLE void didPressLanguageButtonTapped();

    [[nodiscard]] QAbstractItemModel *tableView() { return &m_tableView; }
    [[nodiscard]] QString searchBarText() const { return m_searchBarText; }
    [[nodiscard]] bool isActivityIndicatorAnimating() const { return m_activityIndicatorAnimating; }
    [[nodiscard]] static QUrl transitionImageView();
    /// The picker that lies over this screen, or null.
    [[nodiscard]] LanguageSelectionView *languageSelectionView() const { return m_languagePicker.view(); }
    /// Always one of the two.
    [[nodiscard]] bool isRecentsActive() const { return m_activeTab == Tab::Recents; }
    [[nodiscard]] bool isContactsActive() const { return m_activeTab == Tab::Contacts; }

    [[nodiscard]] QUrl viewSource() const override;

signals:
    void searchBarTextChanged();
    /// The search bar is to give up the keyboard.
    void searchBarResignsFirstResponder();
    /// Whatever has the keyboard is to give it up. A view says this itself, of a tap beside all controls.
    void dismissKeyboard();
    void activityIndicatorAnimatingChanged();
    void languageSelectionViewChanged();
    void activeTabChanged();

protected:
    void viewDidLoad() override;

private:
    enum class Tab { Recents, Contacts };

    void signIn(const QString &jwt);
    void forgetFormerUser();
    void startSocketSession();

    void fetchDeviceContacts();
    void readDeviceContacts(const std::shared_ptr<ContactStore> &contactStore);
    void syncContacts();

    void activateTab(Tab tab);
    void applyTabColors();
    void fetchContacts();
    void fetchRecents();
    void setUsers(std::vector<User> users);
    void reloadTable();

    void openChat(int row);
    void presentChat(const User &user);
    void presentError(const QString &message);

    void setSearchBarText(const QString &text);
    void setActivityIndicatorAnimating(bool animating);

    VLApiManager &m_apiManager;
    LanguageTranslation &m_languages;
    SocketManager &m_socketManager;

    std::shared_ptr<const UserList> m_users; ///< Of the active tab; never null.
    UserTable m_tableView;
    QString m_searchBarText;
    QString m_searchTextValue; ///< What was searched for last, which the bar may not show any more.
    bool m_isSearching = false;
    bool m_activityIndicatorAnimating = false;
    std::vector<Contact> m_serverContactArray;
    /// An entry a number of each contact. Every fetch adds to it, deliberately: it is never cleared.
    std::vector<User> m_contactsArray;
    Tab m_activeTab = Tab::Recents;

    std::uint64_t m_recentsFetch = 0; ///< The number of the latest.
    std::vector<std::unique_ptr<Timer>> m_contactSyncs;
    LanguagePicker m_languagePicker;
    Lifetime m_lifetime;
};

} // namespace vynlex

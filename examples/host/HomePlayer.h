#pragma once

#include <QString>

#include "Props.h"

namespace host {

/// Plays a person who opens the kit from the host's page and finds their way on its home screen.
///
/// Main thread. What does not come is told by the hand.
class HomePlayer {
public:
    explicit HomePlayer(Props &props);

    /// By the button of the host's page.
    void openKit();
    /// The home screen has come to rest; somebody who is signed in sees their recent calls then.
    void awaitHome();
    /// Back to the host's page, with the device's back key.
    void leaveKit();

    /// The tabs; until the people in it are there.
    void openContacts();
    void openRecents();
    /// In place of what was searched for before.
    void searchFor(const QString &text);
    void clearSearch();

    void openConversation();
    /// With somebody of the contacts, who is searched for by name.
    void openChat(const QString &name);

private:
    void openTab(const QString &name);
    void awaitPeople();

    Stage &m_stage;
    Hand &m_hand;
};

} // namespace host

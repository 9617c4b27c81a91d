#pragma once

#include <QString>

#include <functional>
#include <memory>
#include <optional>

#include "Listener.h"
#include "Options.h"
#include "api/VLApiManager.h"

/// One call after the other, each shown as it arrives: token, address book, contacts, recent calls, a conversation, and
/// what its other person heard of a message that was sent. The first that fails ends the tour.
///
/// Main thread.
class BackendTour {
public:
    /// Called once: no text when everything came, else the line to show. It may destroy the tour.
    using End = std::function<void(std::optional<QString> problem)>;

    /// `sandbox` is none with a real deployment, where nobody can listen as another person. All outlive it.
    BackendTour(vynlex::VLApiManager &api, const examples::SandboxProcess *sandbox, const Options &options, End end);

    void start();

private:
    void uploadContacts();
    void showContacts();
    void showRecentCalls();
    void openConversation();
    void send();
    void showMessages();

    /// `show` for an answer, the end of the tour for an error.
    template<typename Answer> vynlex::VLApiCompletion<Answer> then(std::function<void(const Answer &)> show);

    vynlex::VLApiManager &m_api;
    Options m_options;
    End m_end;
    QString m_threadId;
    QString m_sentId;                     ///< of the message that was sent
    std::unique_ptr<Listener> m_listener; ///< with the sandbox only
    bool m_isHeard = false;               ///< by the listener
};

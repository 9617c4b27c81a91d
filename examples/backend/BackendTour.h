#pragma once

#include <QString>

#include <functional>
#include <optional>

#include "Options.h"
#include "api/VLApiManager.h"

/// One call after the other, each shown as it arrives: token, address book, contacts, recent calls, a conversation. The
/// first that fails ends the tour.
///
/// Main thread.
class BackendTour {
public:
    /// Called once: no text when everything came, else the line to show. It may destroy the tour.
    using End = std::function<void(std::optional<QString> problem)>;

    BackendTour(vynlex::VLApiManager &api, const Options &options, End end);

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
};

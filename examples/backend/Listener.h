#pragma once

#include <QDeadlineTimer>
#include <QObject>
#include <QString>

#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "SandboxProcess.h"
#include "api/VLApiManager.h"
#include "chat/VLWebSocketManager.h"

/// The other person of the conversation, at the backend's socket while the tour goes on. With the sandbox only, where
/// everybody's web token is known and an open socket can be looked at from the other side.
///
/// Main thread.
class Listener {
public:
    /// Called once; the text says what went wrong.
    using Then = std::function<void(std::optional<QString> problem)>;

    /// `sandbox` outlives it.
    explicit Listener(const examples::SandboxProcess &sandbox);

    /// `then` when the user is signed in and logged in to the socket. Somebody who waits for admission never gets
    /// there.
    void start(const QString &userId, const Then &then);
    /// Prints what was heard, once that message was and everything is acknowledged.
    void report(const QString &messageId, const Then &then);

private:
    [[nodiscard]] examples::SandboxProcess::Socket socket() const;
    [[nodiscard]] bool hasHeard(const QString &messageId) const;
    /// `problem` is told when the condition does not come true.
    void when(const std::function<bool()> &condition, const QString &problem, QDeadlineTimer deadline,
              const Then &then);

    const examples::SandboxProcess &m_sandbox;
    vynlex::VLApiManager m_api;
    std::unique_ptr<vynlex::VLWebSocketManager> m_session;
    std::vector<vynlex::VLChatMessage> m_heard;
    QObject m_context; ///< of the timers
};

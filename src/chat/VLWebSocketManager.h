#pragma once

#include <VynlexTranslationSDK/VLApiServer.h>

#include <QString>

#include <functional>
#include <memory>
#include <vector>

#include "api/ChatRecords.h"
#include "chat/SocketConnection.h"
#include "chat/SocketMessages.h"
#include "platform/dispatch/Clock.h"
#include "platform/dispatch/Lifetime.h"

namespace vynlex {

/// The chat's session with the backend's socket: logs in, says every 25 s that it is alive, acknowledges every message,
/// and hands new chat messages on.
///
/// A connection that fails while it stands is replaced at once, as often as it takes. What ends a session for good: a
/// failure before the first connection stood, a connection that the server closed, or that ended without a closing
/// handshake. Nobody is told; a new session is the way back.
///
/// Main thread. Destroying the session drops its connections without a closing handshake; `onNewChatMessage` may do so.
class VLWebSocketManager {
public:
    VLWebSocketManager(VLApiServer environment, const QString &token);
    VLWebSocketManager(const VLWebSocketManager &) = delete;
    VLWebSocketManager &operator=(const VLWebSocketManager &) = delete;

    /// To "wss://", the environment's socket host and "/ws"; does nothing while the fields below refuse it.
    void connect();
    /// Closes normally. A session that is not connected is left as it is, its keep-alive timer too.
    void disconnect();
    /// As one binary frame of JSON; kept in `pendingRequests` while not connected.
    void send(const SocketRequest &request);
    void startKeepAliveTimer();
    void keepAliveTick();
    /// What happens to one of the session's connections, of which there are several while earlier ones close.
    void didReceive(const WebSocketEvent &event, SocketConnection &client);

    const VLApiServer serverEnvironment;
    std::unique_ptr<SocketConnection> socketConnection;
    bool isSocketInConnectingState = false; ///< From `connect` until it is connected.
    bool isSocketConnected = false;
    std::unique_ptr<Timer> amAliveTimer;
    const QString authToken;
    /// Never sent later, nor forgotten: deliberate, an old keep-alive or acknowledgement says nothing any more.
    std::vector<SocketRequest> pendingRequests;
    bool useCustomSocketMessages = false; ///< Refuses to connect.
    bool isConnectedToNetwork = false;    ///< Needed to connect, and to reconnect.
    bool isStartedManually = false;
    bool isUserJoinedMeeting = false;                    ///< Needed to reconnect.
    std::function<void()> onRequestToRefreshMeetingData; ///< Kept for the host; not called here.
    std::function<void(const VLChatMessage &)> onNewChatMessage;

private:
    void socketConnected();
    void receiveText(const QByteArray &utf8);
    void reconnect();

    /// Closed connections that have not told their end yet. What they tell counts like the current one's, deliberately.
    std::vector<std::unique_ptr<SocketConnection>> m_closing;
    /// Timers whose place was taken while they ran. They go on until the session ends: deliberate.
    std::vector<std::unique_ptr<Timer>> m_replacedTimers;
    Lifetime m_lifetime;
};

} // namespace vynlex

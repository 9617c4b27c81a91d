#include "chat/VLWebSocketManager.h"

#include <utility>

#include "platform/device/Platform.h"
#include "platform/dispatch/MainQueue.h"

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace vynlex {
namespace {

constexpr auto connectLimit = 20s;
constexpr auto keepAliveInterval = 25s;
constexpr std::uint16_t normalClosure = 1000;

template<typename... Functions> struct Overloaded : Functions... {
    using Functions::operator()...;
};
template<typename... Functions> Overloaded(Functions...) -> Overloaded<Functions...>;

template<typename... Kinds> bool isOneOf(const WebSocketEvent &event)
{
    return (std::holds_alternative<Kinds>(event) || ...);
}

} // namespace

VLWebSocketManager::VLWebSocketManager(VLApiServer environment, const QString &token)
    : serverEnvironment(environment)
    , authToken(token)
{
}

void VLWebSocketManager::connect()
{
    const QUrl url("wss://"_L1 + serverEnvironment.socketHost() + "/ws"_L1);
    if (!url.isValid())
        return;
    if (useCustomSocketMessages || !isConnectedToNetwork || isSocketInConnectingState || isSocketConnected)
        return;
    isSocketInConnectingState = true;
    // No headers: the login message says who connects.
    socketConnection = std::make_unique<SocketConnection>(
        WebSocketRequest{url, {}, connectLimit},
        [this](const WebSocketEvent &event, SocketConnection &client) { didReceive(event, client); });
}

void VLWebSocketManager::disconnect()
{
    if (!isSocketConnected)
        return;
    if (socketConnection) {
        socketConnection->disconnect(normalClosure);
        m_closing.push_back(std::move(socketConnection));
    }
    isSocketInConnectingState = false;
    isSocketConnected = false;
    amAliveTimer.reset();
}

void VLWebSocketManager::send(const SocketRequest &request)
{
    if (!isSocketConnected) {
        pendingRequests.push_back(request);
        return;
    }
    if (socketConnection)
        socketConnection->write(encodeJson(request));
}

void VLWebSocketManager::startKeepAliveTimer()
{
    if (amAliveTimer)
        m_replacedTimers.push_back(std::move(amAliveTimer));
    amAliveTimer = Platform::current()->clock->every(keepAliveInterval, [this] { keepAliveTick(); });
}

void VLWebSocketManager::keepAliveTick()
{
    send(AmAliveSocketRequest(authToken));
}

void VLWebSocketManager::didReceive(const WebSocketEvent &event, SocketConnection &client)
{
    using namespace websocket;
    std::visit(Overloaded{
                   [this](const Connected &) { socketConnected(); },
                   [this](const Disconnected &) {
                       isSocketConnected = false;
                       disconnect(); // Does nothing by now, so that the keep-alive timer goes on: deliberate.
                   },
                   [this](const Text &text) { receiveText(text.utf8); }, [this](const Error &) { reconnect(); },
                   [this](const ReconnectSuggested &suggestion) {
                       if (suggestion.suggested)
                           reconnect();
                   },
                   [this](const Cancelled &) { disconnect(); },
                   [](const auto &) {}, // Binary, Ping, Pong, ViabilityChanged, PeerClosed: nothing follows from them.
               },
               event);
    // None of these calls anybody, so the session is still there.
    if (isOneOf<Disconnected, PeerClosed, Error, Cancelled>(event))
        std::erase_if(m_closing, [&](const auto &closing) { return closing.get() == &client; });
}

void VLWebSocketManager::socketConnected()
{
    isSocketInConnectingState = false;
    isSocketConnected = true;
    send(LoginSocketRequest(authToken));
    MainQueue::async(m_lifetime.guard([this] { startKeepAliveTimer(); }));
}

void VLWebSocketManager::receiveText(const QByteArray &utf8)
{
    const auto frame = JsonTree::parse(utf8);
    if (!frame || !frame->root().isObject())
        return;
    const QString event = frame->root().find("event"_L1).text().value_or(QString());
    send(AckSocketRequest(event)); // before anything is made of it
    if (fromWord<SocketEvent>(event) != SocketEvent::chatMessage)
        return;
    const auto response = fromJson<SocketResponse<VLChatMessage>>(frame->root());
    // Called as a copy, because it may destroy the session. A message that cannot be read is dropped, deliberately.
    if (const auto handler = onNewChatMessage; response && handler)
        handler(response->data);
}

void VLWebSocketManager::reconnect()
{
    if (!isUserJoinedMeeting || !isConnectedToNetwork)
        return;
    disconnect();
    connect();
}

} // namespace vynlex

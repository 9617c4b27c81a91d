#pragma once

#include <QString>
#include <QUrl>

#include <functional>
#include <memory>

#include "platform/net/WebSocketClient.h"
#include "platform/speech/SpeechFailure.h"
#include "platform/speech/SpeechMessage.h"

namespace vynlex {

/// One connection to the speech service, from its upgrade request to its end. On the socket worker; destroying it drops
/// the connection and calls nobody.
class SpeechConnection {
public:
    /// Each may destroy the connection.
    struct Handlers {
        std::function<void()> connected;
        std::function<void(const SpeechMessage &)> received; ///< What is not framed as a message is skipped.
        std::function<void(const SpeechFailure &)> failed;   ///< It is over.
        /// The path that carries it is no longer the device's; it may stay silent for minutes. May be empty.
        std::function<void(const SpeechFailure &)> pathLost;
    };

    SpeechConnection(SocketWorker &worker, const QUrl &url, const QString &key, const QByteArray &id,
                     Handlers handlers);

    [[nodiscard]] bool isEstablished() const;
    void sendText(const SpeechMessage &message);
    void sendBinary(const SpeechMessage &message);
    void close();

private:
    struct State;
    std::shared_ptr<State> m_state;
    std::unique_ptr<WebSocketClient> m_client;
};

/// Calls `method` for as long as `object` lives.
template<typename Object, typename... Arguments>
auto whileAlive(std::weak_ptr<Object> object, void (Object::*method)(Arguments...))
{
    return [object = std::move(object), method](Arguments... arguments) {
        if (const auto alive = object.lock())
            (alive.get()->*method)(arguments...);
    };
}

} // namespace vynlex

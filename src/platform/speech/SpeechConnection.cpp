#include "platform/speech/SpeechConnection.h"

#include <utility>

#include "platform/speech/SpeechEndpoint.h"

namespace vynlex {

/// Shared with the client's handler, which outlives this connection when it destroys it.
struct SpeechConnection::State {
    ConnectionAttempt attempt;
    Handlers handlers;

    void handle(const WebSocketEvent &event)
    {
        if (std::holds_alternative<websocket::Connected>(event)) {
            attempt.established = true;
            handlers.connected();
        } else if (const auto *text = std::get_if<websocket::Text>(&event)) {
            if (const auto message = decodeText(text->utf8))
                handlers.received(*message);
        } else if (const auto *binary = std::get_if<websocket::Binary>(&event)) {
            if (const auto message = decodeBinary(binary->data))
                handlers.received(*message);
        } else if (std::holds_alternative<websocket::Disconnected>(event) ||
                   std::holds_alternative<websocket::PeerClosed>(event) ||
                   std::holds_alternative<websocket::Error>(event) ||
                   std::holds_alternative<websocket::Cancelled>(event)) {
            handlers.failed(failureOf(event, attempt));
        } else if (const auto *suggestion = std::get_if<websocket::ReconnectSuggested>(&event)) {
            if (suggestion->suggested && handlers.pathLost)
                handlers.pathLost(failureOf(event, attempt));
        }
    }
};

SpeechConnection::SpeechConnection(SocketWorker &worker, const QUrl &url, const QString &key, const QByteArray &id,
                                   Handlers handlers)
    : m_state(std::make_shared<State>(State{{url, id, false}, std::move(handlers)}))
    , m_client(worker.makeClient())
{
    m_client->connect(speechRequest(url, key, id),
                      [state = m_state](const WebSocketEvent &event) { state->handle(event); });
}

bool SpeechConnection::isEstablished() const
{
    return m_state->attempt.established;
}

void SpeechConnection::sendText(const SpeechMessage &message)
{
    m_client->sendText(encodeText(message, QDateTime::currentDateTimeUtc()));
}

void SpeechConnection::sendBinary(const SpeechMessage &message)
{
    m_client->sendBinary(encodeBinary(message, QDateTime::currentDateTimeUtc()));
}

void SpeechConnection::close()
{
    m_client->close(1000, "Normal closure by client");
}

} // namespace vynlex

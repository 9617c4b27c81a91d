#include "chat/SocketConnection.h"

#include <utility>

#include "platform/device/Platform.h"
#include "platform/dispatch/MainQueue.h"

namespace vynlex {

SocketConnection::SocketConnection(WebSocketRequest request, Handler handler)
    : m_worker(Platform::current()->socketWorker)
    , m_client(std::make_shared<std::unique_ptr<WebSocketClient>>())
{
    auto deliver =
        m_lifetime.guard([this, handler = std::move(handler)](const WebSocketEvent &event) { handler(event, *this); });
    m_worker->post(
        [worker = m_worker.get(), client = m_client, request = std::move(request), deliver = std::move(deliver)] {
            *client = worker->makeClient();
            (*client)->connect(request, [deliver](const WebSocketEvent &event) {
                MainQueue::async([deliver, event]() mutable { deliver(event); });
            });
        });
}

SocketConnection::~SocketConnection()
{
    m_worker->post([client = std::move(m_client)] { client->reset(); });
}

void SocketConnection::write(const QByteArray &data)
{
    m_worker->post([client = m_client, data] { (*client)->sendBinary(data); });
}

void SocketConnection::disconnect(std::uint16_t closeCode)
{
    m_worker->post([client = m_client, closeCode] { (*client)->close(closeCode, {}); });
}

} // namespace vynlex

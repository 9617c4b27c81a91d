#include "tests/fakes/FakeSocketWorker.h"

#include <QtGlobal>

namespace vynlex {

void FakeSocket::Worker::post(Task task)
{
    tasks.with([&](std::deque<Task> &queue) { queue.push_back(std::move(task)); });
}

void FakeSocket::Worker::run()
{
    const auto next = [this] {
        return tasks.with([](std::deque<Task> &queue) {
            Task front = queue.empty() ? Task() : std::move(queue.front());
            if (front)
                queue.pop_front();
            return front;
        });
    };
    while (const Task task = next())
        task();
}

void FakeSocket::Worker::requireThread(const char *function) const
{
    if (std::this_thread::get_id() != thread)
        qFatal("%s was called on a thread that is not the socket worker", function);
}

void FakeSocket::State::requireWorkerThread(const char *function) const
{
    if (const auto owner = worker.lock())
        owner->requireThread(function);
}

bool FakeSocket::State::deliver(const WebSocketEvent &event)
{
    requireWorkerThread("FakeSocket's delivery");
    const auto callee = handler;
    if (!alive || !callee)
        return false;
    (*callee)(event);
    return true;
}

bool FakeSocket::State::end(const WebSocketEvent &event)
{
    limit.reset();
    const bool heard = phase != Phase::Ended && (phase = Phase::Ended, deliver(event));
    handler.reset();
    return heard;
}

void FakeSocket::State::startLimit(std::chrono::milliseconds time, const WebSocketEvent &event)
{
    const auto owner = worker.lock();
    if (!owner)
        return;
    limit = owner->clock.after(time, [weak = weak_from_this(), event, weakOwner = worker] {
        if (const auto self = weak.lock())
            self->end(event);
        if (const auto runner = weakOwner.lock())
            runner->run();
    });
}

namespace {

constexpr std::chrono::seconds closingLimit{5};

class FakeWebSocketClient final : public WebSocketClient {
public:
    explicit FakeWebSocketClient(std::shared_ptr<FakeSocket::State> state)
        : m_state(std::move(state))
    {
    }

    ~FakeWebSocketClient() override
    {
        m_state->requireWorkerThread("WebSocketClient's destructor");
        m_state->alive = false;
        m_state->limit.reset();
        m_state->handler.reset();
    }

    void connect(WebSocketRequest request, Handler handler) override
    {
        m_state->requireWorkerThread("WebSocketClient::connect");
        if (m_state->phase != FakeSocket::Phase::Idle)
            qFatal("WebSocketClient::connect was called twice");
        if (!handler)
            qFatal("WebSocketClient::connect was given no handler");
        m_state->phase = FakeSocket::Phase::Connecting;
        m_state->request = std::move(request);
        m_state->handler = std::make_shared<const Handler>(std::move(handler));
        const auto limit = m_state->request.connectTimeout;
        m_state->startLimit(
            limit, websocket::Error{{WebSocketError::Kind::Timeout, 0, QStringLiteral("no connection in time")}});
    }

    void sendText(QByteArray utf8) override { send({FakeSocketMessage::Kind::Text, std::move(utf8)}); }
    void sendBinary(QByteArray data) override { send({FakeSocketMessage::Kind::Binary, std::move(data)}); }

    void close(std::uint16_t code, const QByteArray &reason) override
    {
        m_state->requireWorkerThread("WebSocketClient::close");
        if (m_state->phase == FakeSocket::Phase::Idle)
            qFatal("WebSocketClient::close was called before connect");
        if (m_state->closing || m_state->phase == FakeSocket::Phase::Ended)
            return;
        m_state->closing = FakeSocketClose{code, reason};
        if (m_state->phase == FakeSocket::Phase::Connected) {
            m_state->startLimit(closingLimit, websocket::Disconnected{QString::fromUtf8(reason), code});
            return;
        }
        if (const auto worker = m_state->worker.lock())
            worker->post([weak = std::weak_ptr(m_state)] {
                if (const auto state = weak.lock())
                    state->end(websocket::Cancelled{});
            });
    }

private:
    void send(FakeSocketMessage message)
    {
        m_state->requireWorkerThread("WebSocketClient's send");
        if (m_state->closing || m_state->phase == FakeSocket::Phase::Ended)
            return;
        (m_state->phase == FakeSocket::Phase::Connected ? m_state->sent : m_state->waiting)
            .push_back(std::move(message));
    }

    std::shared_ptr<FakeSocket::State> m_state;
};

} // namespace

bool FakeSocket::deliver(const WebSocketEvent &event)
{
    State &state = *m_state;
    const auto is = [&]<typename... Kinds>(std::in_place_type_t<Kinds>...) {
        return (std::holds_alternative<Kinds>(event) || ...);
    };
    using namespace websocket;
    if (!state.alive) // What the server sends reaches nobody.
        return false;
    const bool connects = is(std::in_place_type<Connected>);
    const bool fails = is(std::in_place_type<Error>);
    if (is(std::in_place_type<Cancelled>) || (connects && state.phase != Phase::Connecting) ||
        (!connects && state.phase != Phase::Connected && !(fails && state.phase == Phase::Connecting)))
        qFatal("a socket was told what its server cannot do now");
    if (fails || is(std::in_place_type<Disconnected>, std::in_place_type<PeerClosed>))
        return state.end(event);
    if (state.closing && is(std::in_place_type<Connected>, std::in_place_type<Text>, std::in_place_type<Binary>))
        return false;
    if (connects) {
        state.phase = Phase::Connected;
        state.limit.reset();
        state.sent = std::exchange(state.waiting, {});
    }
    return state.deliver(event);
}

std::unique_ptr<Timer> FakeSocketWorker::after(std::chrono::milliseconds delay, Task task)
{
    m_worker->requireThread("SocketWorker::after");
    return m_worker->clock.after(delay, [weak = std::weak_ptr(m_worker), task = std::move(task)] {
        task();
        if (const auto worker = weak.lock())
            worker->run();
    });
}

std::chrono::steady_clock::time_point FakeSocketWorker::now() const
{
    m_worker->requireThread("SocketWorker::now");
    return m_worker->clock.now();
}

std::unique_ptr<WebSocketClient> FakeSocketWorker::makeClient()
{
    m_worker->requireThread("SocketWorker::makeClient");
    m_worker->sockets.push_back(std::make_shared<FakeSocket::State>());
    m_worker->sockets.back()->worker = m_worker;
    return std::make_unique<FakeWebSocketClient>(m_worker->sockets.back());
}

void FakeSocketWorker::run()
{
    m_worker->requireThread("FakeSocketWorker::run");
    const auto worker = m_worker; // which a task may destroy
    worker->run();
}

void FakeSocketWorker::advance(std::chrono::milliseconds time)
{
    run();
    const auto worker = m_worker;
    worker->clock.advance(time);
}

FakeSocket FakeSocketWorker::socket(int index) const
{
    if (index < 0 || index >= socketCount())
        qFatal("socket %d was asked for, and %d have been made", index, socketCount());
    return FakeSocket(m_worker->sockets[static_cast<std::size_t>(index)]);
}

} // namespace vynlex

#include "tests/fakes/FakeSocketWorker.h"

#include <QtGlobal>

#include <deque>
#include <thread>
#include <utility>

#include "platform/dispatch/Guarded.h"
#include "tests/fakes/FakeClock.h"

namespace vynlex {
namespace {

constexpr std::chrono::seconds closingLimit{5};

} // namespace

struct FakeSocketWorker::Core {
    std::thread::id thread = std::this_thread::get_id();
    Guarded<std::deque<Task>> tasks;
    FakeClock clock;
    std::vector<std::shared_ptr<FakeSocket::State>> sockets;

    void post(Task task)
    {
        tasks.with([&](std::deque<Task> &queue) { queue.push_back(std::move(task)); });
    }

    void run()
    {
        while (const Task task = next())
            task();
    }

    void requireWorkerThread(const char *function) const
    {
        if (std::this_thread::get_id() != thread)
            qFatal("%s was called on a thread that is not the socket worker", function);
    }

private:
    Task next()
    {
        return tasks.with([](std::deque<Task> &queue) {
            if (queue.empty())
                return Task{};
            Task front = std::move(queue.front());
            queue.pop_front();
            return front;
        });
    }
};

struct FakeSocket::State : std::enable_shared_from_this<FakeSocket::State> {
    enum class Phase { Idle, Connecting, Connected, Ended };

    std::weak_ptr<FakeSocketWorker::Core> core;
    bool alive = true;
    Phase phase = Phase::Idle;
    WebSocketRequest request;
    /// Shared, so that it lives through a call in which the client is destroyed.
    std::shared_ptr<const WebSocketClient::Handler> handler;
    std::vector<FakeSocketMessage> waiting;
    std::vector<FakeSocketMessage> sent;
    std::optional<FakeSocketClose> closing;
    std::unique_ptr<Timer> limit;

    void requireWorkerThread(const char *function) const
    {
        if (const auto worker = core.lock())
            worker->requireWorkerThread(function);
    }

    bool deliver(const WebSocketEvent &event)
    {
        requireWorkerThread("FakeSocket's delivery");
        const auto callee = handler;
        if (!alive || !callee)
            return false;
        (*callee)(event);
        return true;
    }

    bool end(const WebSocketEvent &event)
    {
        limit.reset();
        const bool heard = phase != Phase::Ended && (phase = Phase::Ended, deliver(event));
        handler.reset();
        return heard;
    }

    void startLimit(std::chrono::milliseconds time, const WebSocketEvent &event)
    {
        const auto worker = core.lock();
        if (!worker)
            return;
        limit = worker->clock.after(time, [weak = weak_from_this(), event, owner = core] {
            if (const auto self = weak.lock())
                self->end(event);
            if (const auto runner = owner.lock())
                runner->run();
        });
    }

    /// A client that was destroyed has no connection any more: what the server sends reaches nobody. A closing one
    /// drops messages.
    bool deliverWhile(bool allowed, const char *what, const WebSocketEvent &event)
    {
        if (alive && !allowed)
            qFatal("a socket that is not in the state for it was told: %s", what);
        const bool isMessage =
            std::holds_alternative<websocket::Text>(event) || std::holds_alternative<websocket::Binary>(event);
        return alive && !(closing && isMessage) && deliver(event);
    }

    [[nodiscard]] bool isOpen() const { return phase == Phase::Connected; }
};

namespace {

using Phase = FakeSocket::State::Phase;

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
        if (m_state->phase != Phase::Idle)
            qFatal("WebSocketClient::connect was called twice");
        if (!handler)
            qFatal("WebSocketClient::connect was given no handler");
        m_state->phase = Phase::Connecting;
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
        if (m_state->phase == Phase::Idle)
            qFatal("WebSocketClient::close was called before connect");
        if (m_state->closing || m_state->phase == Phase::Ended)
            return;
        m_state->closing = FakeSocketClose{code, reason};
        if (m_state->phase == Phase::Connected) {
            m_state->startLimit(closingLimit, websocket::Disconnected{QString::fromUtf8(reason), code});
            return;
        }
        if (const auto worker = m_state->core.lock())
            worker->post([weak = std::weak_ptr(m_state)] {
                if (const auto state = weak.lock())
                    state->end(websocket::Cancelled{});
            });
    }

private:
    void send(FakeSocketMessage message)
    {
        m_state->requireWorkerThread("WebSocketClient's send");
        if (m_state->closing || m_state->phase == Phase::Ended)
            return;
        (m_state->isOpen() ? m_state->sent : m_state->waiting).push_back(std::move(message));
    }

    std::shared_ptr<FakeSocket::State> m_state;
};

QByteArrayList dataOf(const std::vector<FakeSocketMessage> &messages, FakeSocketMessage::Kind kind)
{
    QByteArrayList data;
    for (const FakeSocketMessage &message : messages) {
        if (message.kind == kind)
            data << message.data;
    }
    return data;
}

} // namespace

FakeSocket::FakeSocket(std::shared_ptr<State> state)
    : m_state(std::move(state))
{
}

bool FakeSocket::isAlive() const
{
    return m_state->alive;
}

bool FakeSocket::isConnecting() const
{
    return m_state->alive && m_state->phase == Phase::Connecting && !m_state->closing;
}

bool FakeSocket::isConnected() const
{
    return m_state->alive && m_state->isOpen() && !m_state->closing;
}

bool FakeSocket::hasEnded() const
{
    return m_state->phase == Phase::Ended;
}

WebSocketRequest FakeSocket::request() const
{
    return m_state->request;
}

std::vector<FakeSocketMessage> FakeSocket::sent() const
{
    return m_state->sent;
}

QByteArrayList FakeSocket::sentTexts() const
{
    return dataOf(m_state->sent, FakeSocketMessage::Kind::Text);
}

QByteArrayList FakeSocket::sentBinaries() const
{
    return dataOf(m_state->sent, FakeSocketMessage::Kind::Binary);
}

std::vector<FakeSocketMessage> FakeSocket::takeSent()
{
    return std::exchange(m_state->sent, {});
}

std::optional<FakeSocketClose> FakeSocket::closing() const
{
    return m_state->closing;
}

bool FakeSocket::connected(const HttpHeaders &headers)
{
    if (!m_state->alive)
        return false;
    if (m_state->phase != Phase::Connecting)
        qFatal("a socket that does not connect was told: connected");
    if (m_state->closing) // Cancelled is on its way.
        return false;
    m_state->phase = Phase::Connected;
    m_state->limit.reset();
    m_state->sent = std::exchange(m_state->waiting, {});
    return m_state->deliver(websocket::Connected{headers});
}

bool FakeSocket::text(const QByteArray &utf8)
{
    return m_state->deliverWhile(m_state->isOpen(), "text", websocket::Text{utf8});
}

bool FakeSocket::binary(const QByteArray &data)
{
    return m_state->deliverWhile(m_state->isOpen(), "binary", websocket::Binary{data});
}

bool FakeSocket::ping()
{
    return m_state->deliverWhile(m_state->isOpen(), "ping", websocket::Ping{});
}

bool FakeSocket::pong()
{
    return m_state->deliverWhile(m_state->isOpen(), "pong", websocket::Pong{});
}

bool FakeSocket::viabilityChanged(bool viable)
{
    return m_state->deliverWhile(m_state->isOpen(), "viabilityChanged", websocket::ViabilityChanged{viable});
}

bool FakeSocket::reconnectSuggested()
{
    return m_state->deliverWhile(m_state->isOpen(), "reconnectSuggested", websocket::ReconnectSuggested{true});
}

bool FakeSocket::disconnected(std::uint16_t code, const QString &reason)
{
    if (m_state->alive && !m_state->isOpen())
        qFatal("a socket that is not connected was told: disconnected");
    return m_state->end(websocket::Disconnected{reason, code});
}

bool FakeSocket::peerClosed()
{
    if (m_state->alive && !m_state->isOpen())
        qFatal("a socket that is not connected was told: peerClosed");
    return m_state->end(websocket::PeerClosed{});
}

bool FakeSocket::error(const WebSocketError &error)
{
    if (m_state->alive && !m_state->isOpen() && m_state->phase != Phase::Connecting)
        qFatal("a socket that is neither connecting nor connected was told: error");
    return m_state->end(websocket::Error{error});
}

FakeSocketWorker::FakeSocketWorker()
    : m_core(std::make_shared<Core>())
{
}

FakeSocketWorker::~FakeSocketWorker() = default;

void FakeSocketWorker::post(Task task)
{
    m_core->post(std::move(task));
}

std::unique_ptr<Timer> FakeSocketWorker::after(std::chrono::milliseconds delay, Task task)
{
    m_core->requireWorkerThread("SocketWorker::after");
    return m_core->clock.after(delay, [weak = std::weak_ptr(m_core), task = std::move(task)] {
        task();
        if (const auto core = weak.lock())
            core->run();
    });
}

std::chrono::steady_clock::time_point FakeSocketWorker::now() const
{
    m_core->requireWorkerThread("SocketWorker::now");
    return m_core->clock.now();
}

std::unique_ptr<WebSocketClient> FakeSocketWorker::makeClient()
{
    m_core->requireWorkerThread("SocketWorker::makeClient");
    auto state = std::make_shared<FakeSocket::State>();
    state->core = m_core;
    m_core->sockets.push_back(state);
    return std::make_unique<FakeWebSocketClient>(std::move(state));
}

void FakeSocketWorker::run()
{
    m_core->requireWorkerThread("FakeSocketWorker::run");
    const auto core = m_core;
    core->run();
}

void FakeSocketWorker::advance(std::chrono::milliseconds time)
{
    run();
    const auto core = m_core;
    core->clock.advance(time);
}

std::size_t FakeSocketWorker::runningTimers() const
{
    return m_core->clock.runningTimers();
}

int FakeSocketWorker::socketCount() const
{
    return static_cast<int>(m_core->sockets.size());
}

FakeSocket FakeSocketWorker::socket(int index) const
{
    if (index < 0 || index >= socketCount())
        qFatal("socket %d was asked for, and %d have been made", index, socketCount());
    return FakeSocket(m_core->sockets[static_cast<std::size_t>(index)]);
}

FakeSocket FakeSocketWorker::lastSocket() const
{
    return socket(socketCount() - 1);
}

std::vector<FakeSocket> FakeSocketWorker::sockets() const
{
    std::vector<FakeSocket> all;
    all.reserve(m_core->sockets.size());
    for (const auto &state : m_core->sockets)
        all.emplace_back(state);
    return all;
}

} // namespace vynlex

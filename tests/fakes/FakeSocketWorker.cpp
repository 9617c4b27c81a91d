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

} // namespace

bool FakeSocket::isAlive() const
{
    return m_state->alive;
}

bool FakeSocket::isConnecting() const
{
    return m_state->alive && m_state->phase == Phase::Connecting && !m_state->closing;
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

std::vector<FakeSocketMessage> FakeSocket::takeSent()
{
    return std::exchange(m_state->sent, {});
}

std::optional<FakeSocketClose> FakeSocket::closing() const
{
    return m_state->closing;
}

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
        (!connects && !state.isOpen() && !(fails && state.phase == Phase::Connecting)))
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

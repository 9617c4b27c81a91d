#include "platform/net/BeastSocketWorker.h"

#include <thread>
#include <utility>
#include <vector>

#include "platform/dispatch/FatalError.h"
#include "platform/dispatch/MainQueue.h"
#include "platform/net/BeastConnection.h"
#include "platform/net/ConnectionPolicy.h"
#include <boost/asio/executor_work_guard.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/post.hpp>
#include <boost/asio/steady_timer.hpp>

namespace vynlex {

namespace asio = boost::asio;

struct BeastSocketWorker::Core {
    // Before the loop: what the loop's end destroys may still look at these.
    std::vector<std::weak_ptr<BeastConnection>> connections;
    bool stopped = false;
    asio::io_context loop{1};
    asio::executor_work_guard<asio::io_context::executor_type> work{loop.get_executor()};
    std::thread thread;

    void requireWorker(const char *function) const
    {
        if (!stopped && std::this_thread::get_id() != thread.get_id())
            fatalError(QStringLiteral("%1 is for the socket worker's thread.").arg(QLatin1String(function)));
    }
};

namespace {

class AsioTimer final : public Timer {
public:
    AsioTimer(asio::io_context &loop, std::chrono::milliseconds delay, Task task)
        : m_state(std::make_shared<State>(loop))
    {
        m_state->task = std::move(task);
        m_state->timer.expires_after(delay);
        m_state->timer.async_wait([state = m_state](boost::system::error_code) {
            // Taken out, because the task may destroy this timer. A stopped timer has none, even one that was due.
            if (const Task due = std::exchange(state->task, nullptr))
                due();
        });
    }
    ~AsioTimer() override
    {
        m_state->task = nullptr;
        m_state->timer.cancel();
    }

private:
    struct State {
        explicit State(asio::io_context &loop)
            : timer(loop)
        {
        }
        asio::steady_timer timer;
        Task task;
    };
    std::shared_ptr<State> m_state;
};

template<typename Core> class BeastWebSocketClient final : public WebSocketClient {
public:
    explicit BeastWebSocketClient(std::shared_ptr<Core> core)
        : m_core(std::move(core))
        , m_connection(std::make_shared<BeastConnection>(m_core->loop))
    {
        std::erase_if(m_core->connections, [](const auto &known) { return known.expired(); });
        m_core->connections.push_back(m_connection);
    }

    ~BeastWebSocketClient() override
    {
        m_core->requireWorker("WebSocketClient's destructor");
        m_connection->abandon();
    }

    void connect(WebSocketRequest request, Handler handler) override
    {
        m_core->requireWorker("WebSocketClient::connect");
        const QUrl url = request.url;
        m_connection->start(std::move(request), std::move(handler));
        MainQueue::async([core = std::weak_ptr(m_core), connection = std::weak_ptr(m_connection), url] {
            const auto alive = core.lock();
            if (!alive)
                return;
            asio::post(alive->loop, [connection, policy = ConnectionPolicy::current(url)] {
                if (const auto open = connection.lock())
                    open->open(policy);
            });
        });
    }

    void sendText(QByteArray utf8) override
    {
        m_core->requireWorker("WebSocketClient::sendText");
        m_connection->send(true, std::move(utf8));
    }

    void sendBinary(QByteArray data) override
    {
        m_core->requireWorker("WebSocketClient::sendBinary");
        m_connection->send(false, std::move(data));
    }

    void close(std::uint16_t code, const QByteArray &reason) override
    {
        m_core->requireWorker("WebSocketClient::close");
        m_connection->close(code, reason);
    }

private:
    std::shared_ptr<Core> m_core;
    std::shared_ptr<BeastConnection> m_connection;
};

} // namespace

BeastSocketWorker::BeastSocketWorker()
    : m_core(std::make_shared<Core>())
{
    m_core->thread = std::thread([&loop = m_core->loop] { loop.run(); });
}

BeastSocketWorker::~BeastSocketWorker()
{
    m_core->loop.stop();
    m_core->thread.join();
    m_core->stopped = true;
}

void BeastSocketWorker::post(Task task)
{
    asio::post(m_core->loop, std::move(task));
}

std::unique_ptr<Timer> BeastSocketWorker::after(std::chrono::milliseconds delay, Task task)
{
    m_core->requireWorker("SocketWorker::after");
    return std::make_unique<AsioTimer>(m_core->loop, delay, std::move(task));
}

std::chrono::steady_clock::time_point BeastSocketWorker::now() const
{
    return std::chrono::steady_clock::now();
}

std::unique_ptr<WebSocketClient> BeastSocketWorker::makeClient()
{
    m_core->requireWorker("SocketWorker::makeClient");
    return std::make_unique<BeastWebSocketClient<Core>>(m_core);
}

void BeastSocketWorker::pathChanged()
{
    asio::post(m_core->loop, [&core = *m_core] {
        const auto connections = core.connections; // A handler may make new clients.
        for (const auto &known : connections) {
            if (const auto connection = known.lock())
                connection->suggestReconnect();
        }
    });
}

} // namespace vynlex

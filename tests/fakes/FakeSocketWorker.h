#pragma once

#include <QByteArray>

#include <cstdint>
#include <deque>
#include <memory>
#include <optional>
#include <thread>
#include <utility>
#include <vector>

#include "platform/dispatch/Guarded.h"
#include "platform/net/WebSocketClient.h"
#include "tests/fakes/FakeClock.h"

namespace vynlex {

struct FakeSocketMessage {
    enum class Kind { Text, Binary };
    Kind kind = Kind::Text;
    QByteArray data;

    bool operator==(const FakeSocketMessage &) const = default;
};

struct FakeSocketClose {
    std::uint16_t code = 0;
    QByteArray reason;

    bool operator==(const FakeSocketClose &) const = default;
};

/// The server's end of one client that was made. A handle, good after the client is gone. Test's thread.
class FakeSocket {
public:
    enum class Phase { Idle, Connecting, Connected, Ended };
    struct Worker;
    struct State : std::enable_shared_from_this<State> {
        std::weak_ptr<Worker> worker;
        bool alive = true;
        Phase phase = Phase::Idle;
        WebSocketRequest request;
        /// Shared, so that it lives through a call in which the client is destroyed.
        std::shared_ptr<const WebSocketClient::Handler> handler;
        std::vector<FakeSocketMessage> waiting;
        std::vector<FakeSocketMessage> sent;
        std::optional<FakeSocketClose> closing;
        std::unique_ptr<Timer> limit;

        void requireWorkerThread(const char *function) const;
        bool deliver(const WebSocketEvent &event);
        bool end(const WebSocketEvent &event);
        void startLimit(std::chrono::milliseconds time, const WebSocketEvent &event);
    };
    /// What a worker and its sockets share.
    struct Worker {
        std::thread::id thread = std::this_thread::get_id();
        Guarded<std::deque<Task>> tasks;
        FakeClock clock;
        std::vector<std::shared_ptr<State>> sockets;

        void post(Task task);
        void run();
        void requireThread(const char *function) const;
    };
    explicit FakeSocket(std::shared_ptr<State> state)
        : m_state(std::move(state))
    {
    }

    [[nodiscard]] bool isAlive() const { return m_state->alive; } ///< The client has not been destroyed.
    /// `connect` was called, and nothing has come of it yet.
    [[nodiscard]] bool isConnecting() const
    {
        return m_state->alive && m_state->phase == Phase::Connecting && !m_state->closing;
    }
    /// Its last event has come; a destroyed client ends without one.
    [[nodiscard]] bool hasEnded() const { return m_state->phase == Phase::Ended; }
    [[nodiscard]] WebSocketRequest request() const { return m_state->request; }

    /// What has reached the server: nothing of what the client sends before it is connected.
    [[nodiscard]] std::vector<FakeSocketMessage> sent() const { return m_state->sent; }
    /// Returns `sent` and forgets it.
    std::vector<FakeSocketMessage> takeSent() { return std::exchange(m_state->sent, {}); }
    /// The client's closing frame, behind everything in `sent`.
    [[nodiscard]] std::optional<FakeSocketClose> closing() const { return m_state->closing; }

    /// Runs the client's handler before it returns; false means that nobody heard, because the client has been
    /// destroyed, or drops messages because it is closing. What a server or a network cannot do (a message before the
    /// upgrade, anything after the end, Cancelled) ends the test program.
    bool deliver(const WebSocketEvent &event);
    bool connected() { return deliver(websocket::Connected{}); }
    bool text(const QByteArray &utf8) { return deliver(websocket::Text{utf8}); }
    bool binary(const QByteArray &data) { return deliver(websocket::Binary{data}); }
    bool disconnected(std::uint16_t code, const QString &reason)
    {
        return deliver(websocket::Disconnected{reason, code});
    }

private:
    std::shared_ptr<State> m_state;
};

/// A socket worker on the test's thread that runs when told, with a clock that stands still until the test moves it.
///
/// `post` is for any thread; the rest belongs to the thread that made the worker, and elsewhere ends the test program.
class FakeSocketWorker final : public SocketWorker {
public:
    void post(Task task) override { m_worker->post(std::move(task)); }
    [[nodiscard]] std::unique_ptr<Timer> after(std::chrono::milliseconds delay, Task task) override;
    [[nodiscard]] std::chrono::steady_clock::time_point now() const override;
    [[nodiscard]] std::unique_ptr<WebSocketClient> makeClient() override;

    /// Runs what has been posted, and what that posts, until nothing is left.
    void run();

    /// Runs what has been posted, then moves the clock; each timer fires at its time, and what it posts runs before the
    /// next fires. A client's own limits (5 s for the closing handshake, the request's for connecting) count too.
    void advance(std::chrono::milliseconds time);

    [[nodiscard]] std::size_t runningTimers() const { return m_worker->clock.runningTimers(); }

    /// In the order in which they were made. Asking for one that does not exist ends the test program.
    [[nodiscard]] int socketCount() const { return static_cast<int>(m_worker->sockets.size()); }
    [[nodiscard]] FakeSocket socket(int index) const;
    [[nodiscard]] FakeSocket lastSocket() const { return socket(socketCount() - 1); }
    /// All that have been made, dead ones included.
    [[nodiscard]] std::vector<FakeSocket> sockets() const
    {
        return {m_worker->sockets.begin(), m_worker->sockets.end()};
    }

private:
    const std::shared_ptr<FakeSocket::Worker> m_worker = std::make_shared<FakeSocket::Worker>();
};

} // namespace vynlex

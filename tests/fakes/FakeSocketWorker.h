#pragma once

#include <QByteArray>
#include <QByteArrayList>

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "platform/net/WebSocketClient.h"

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
    struct State;
    explicit FakeSocket(std::shared_ptr<State> state)
        : m_state(std::move(state))
    {
    }

    [[nodiscard]] bool isAlive() const;      ///< The client has not been destroyed.
    [[nodiscard]] bool isConnecting() const; ///< `connect` was called, and nothing has come of it yet.
    [[nodiscard]] bool hasEnded() const;     ///< Its last event has come; a destroyed client ends without one.
    [[nodiscard]] WebSocketRequest request() const;

    /// What has reached the server: nothing of what the client sends before it is connected.
    [[nodiscard]] std::vector<FakeSocketMessage> sent() const;
    /// Returns `sent` and forgets it.
    std::vector<FakeSocketMessage> takeSent();
    /// The client's closing frame, behind everything in `sent`.
    [[nodiscard]] std::optional<FakeSocketClose> closing() const;

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
    FakeSocketWorker();
    ~FakeSocketWorker() override;

    void post(Task task) override;
    [[nodiscard]] std::unique_ptr<Timer> after(std::chrono::milliseconds delay, Task task) override;
    [[nodiscard]] std::chrono::steady_clock::time_point now() const override;
    [[nodiscard]] std::unique_ptr<WebSocketClient> makeClient() override;

    /// Runs what has been posted, and what that posts, until nothing is left.
    void run();

    /// Runs what has been posted, then moves the clock; each timer fires at its time, and what it posts runs before the
    /// next fires. A client's own limits (5 s for the closing handshake, the request's for connecting) count too.
    void advance(std::chrono::milliseconds time);

    [[nodiscard]] std::size_t runningTimers() const;

    /// In the order in which they were made. Asking for one that does not exist ends the test program.
    [[nodiscard]] int socketCount() const;
    [[nodiscard]] FakeSocket socket(int index) const;
    [[nodiscard]] FakeSocket lastSocket() const;
    /// All that have been made, dead ones included.
    [[nodiscard]] std::vector<FakeSocket> sockets() const;

    struct Core;

private:
    std::shared_ptr<Core> m_core;
};

} // namespace vynlex

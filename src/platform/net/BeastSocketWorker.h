#pragma once

#include <memory>

#include "platform/net/WebSocketClient.h"

namespace vynlex {

/// The shipped socket worker: one thread with an Asio event loop; its clients are Boost.Beast's.
///
/// A client looks the application's trust and proxy up on the main queue when it connects, so the main thread's event
/// loop has to run for it; its limit for connecting counts from `connect` all the same. Names are looked up one after
/// the other, and a name's addresses are tried in turn within that limit.
///
/// `after`, `makeClient` and the clients' functions end the process when they are called elsewhere than on the worker.
class BeastSocketWorker final : public SocketWorker {
public:
    BeastSocketWorker();
    /// Ends the thread and waits for it; what was posted and has not run is dropped. Not on the worker. Clients and
    /// timers that are left may be destroyed afterwards, on the thread that destroyed the worker.
    ~BeastSocketWorker() override;
    BeastSocketWorker(const BeastSocketWorker &) = delete;
    BeastSocketWorker &operator=(const BeastSocketWorker &) = delete;

    void post(Task task) override;
    [[nodiscard]] std::unique_ptr<Timer> after(std::chrono::milliseconds delay, Task task) override;
    [[nodiscard]] std::chrono::steady_clock::time_point now() const override;
    [[nodiscard]] std::unique_ptr<WebSocketClient> makeClient() override;

    /// The device's network path has changed: raises ReconnectSuggested in every client that is connected. Any thread.
    void pathChanged();

private:
    struct Core;
    std::shared_ptr<Core> m_core;
};

} // namespace vynlex

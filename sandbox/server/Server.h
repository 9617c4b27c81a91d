#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>

#include "sandbox/server/HttpSession.h"
#include "sandbox/server/ServerContext.h"

namespace sandbox {

struct ServerOptions {
    std::filesystem::path dataFolder; ///< the authority's folder goes into it
    std::uint16_t tlsPort = 0;        ///< 0: the system chooses
    std::uint16_t proxyPort = 0;
    std::uint16_t controlPort = 0;
    unsigned workers = 2;
    std::size_t mostConnections = 1000; ///< further ones are closed at once
    HttpLimits limits;
};

/// Three listeners on 127.0.0.1: TLS for every host name of the routes, an HTTP CONNECT proxy to the former, and plain
/// HTTP for control.
///
/// Services are added to `context()` between construction and `listen`; what their routes refer to must outlive the
/// server. `stop` may be called from any thread, everything else from one.
class Server {
public:
    explicit Server(ServerOptions options);
    ~Server();

    [[nodiscard]] ServerContext &context();

    struct Listening {
        std::uint16_t tlsPort;
        std::uint16_t proxyPort;
        std::uint16_t controlPort;
        std::filesystem::path authorityFile; ///< the certificate that clients are to trust
    };
    /// Makes the certificates and opens the ports. Throws std::runtime_error when that fails.
    Listening listen();

    /// Serves until `stop`. Open connections are dropped then; work on worker threads is waited for.
    void run();
    void stop();

    /// Calls `stop` when SIGTERM or SIGINT comes.
    void stopOnSignals();
    /// Calls `stop` when standard input reaches its end, as it does when the process that holds its other end is gone.
    void stopWithStandardInput();

private:
    struct State;
    std::unique_ptr<State> m_state;
};

} // namespace sandbox

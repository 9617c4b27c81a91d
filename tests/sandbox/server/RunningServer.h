#pragma once

#include <filesystem>
#include <functional>
#include <thread>

#include <QTemporaryDir>

#include "sandbox/server/Server.h"

namespace sandbox {

/// A server on ports of the system's choice, with its own data folder, for as long as the object lives.
class RunningServer {
public:
    using AddServices = std::function<void(ServerContext &)>;

    explicit RunningServer(const AddServices &addServices, ServerOptions options = {})
        : m_server(withFolder(std::move(options)))
    {
        addServices(m_server.context());
        m_listening = m_server.listen();
        m_thread = std::thread([this] { m_server.run(); });
    }
    ~RunningServer()
    {
        m_server.stop();
        m_thread.join();
    }
    RunningServer(const RunningServer &) = delete;
    RunningServer &operator=(const RunningServer &) = delete;

    [[nodiscard]] const Server::Listening &listening() const { return m_listening; }
    [[nodiscard]] FaultBoard &faults() { return m_server.context().faults; }
    [[nodiscard]] RequestLog &log() { return m_server.context().log; }

private:
    ServerOptions withFolder(ServerOptions options)
    {
        if (options.dataFolder.empty())
            options.dataFolder = m_folder.path().toStdString();
        return options;
    }

    QTemporaryDir m_folder;
    Server m_server;
    Server::Listening m_listening{};
    std::thread m_thread;
};

} // namespace sandbox

#include "sandbox/server/Server.h"

#include <boost/asio/as_tuple.hpp>
#include <boost/asio/co_spawn.hpp>
#include <boost/asio/detached.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/posix/stream_descriptor.hpp>
#include <boost/asio/signal_set.hpp>
#include <boost/asio/ssl/context.hpp>
#include <boost/asio/steady_timer.hpp>
#include <boost/asio/use_awaitable.hpp>

#include <unistd.h>

#include <array>
#include <csignal>
#include <exception>
#include <iostream>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>

#include "sandbox/server/CertificateAuthority.h"
#include "sandbox/server/ConnectProxy.h"
#include "sandbox/server/ControlRoutes.h"

namespace sandbox {

namespace asio = boost::asio;
using asio::ip::tcp;

namespace {

constexpr auto result = asio::as_tuple(asio::use_awaitable);
constexpr std::chrono::milliseconds pauseWithoutDescriptors{100};

tcp::acceptor listenOn(asio::io_context &io, std::uint16_t port)
{
    const tcp::endpoint endpoint(asio::ip::address_v4::loopback(), port);
    try {
        return {io, endpoint, true};
    } catch (const boost::system::system_error &error) {
        throw std::runtime_error("cannot listen on port " + std::to_string(port) + ": " + error.code().message());
    }
}

} // namespace

struct Server::State {
    using Serve = std::function<asio::awaitable<void>(std::unique_ptr<TcpStream>)>;

    explicit State(ServerOptions given)
        : options(std::move(given))
        , workers(options.workers)
    {
        addControlRoutes(context);
    }

    Site site() { return {context.router, context.faults, context.log, options.limits}; }
    Site controlSite() { return {context.control, noFaults, controlLog, options.limits}; }

    asio::awaitable<void> acceptAll(tcp::acceptor &acceptor, Serve serve)
    {
        for (;;) {
            auto [error, socket] = co_await acceptor.async_accept(result);
            if (error == asio::error::operation_aborted)
                co_return;
            if (error) { // most likely out of file descriptors
                asio::steady_timer pause(io, pauseWithoutDescriptors);
                co_await pause.async_wait(result);
                continue;
            }
            if (connections >= options.mostConnections)
                continue;
            boost::system::error_code ignored; // only a matter of speed
            socket.set_option(tcp::no_delay(true), ignored);
            asio::co_spawn(io, counted(serve, std::make_unique<TcpStream>(std::move(socket))), report);
        }
    }

    asio::awaitable<void> counted(Serve serve, std::unique_ptr<TcpStream> stream)
    {
        struct Count {
            std::size_t &connections;
            explicit Count(std::size_t &all)
                : connections(all)
            {
                ++connections;
            }
            ~Count() { --connections; }
        } const count(connections);
        co_await serve(std::move(stream));
    }

    static void report(const std::exception_ptr &failure)
    {
        try {
            if (failure)
                std::rethrow_exception(failure);
        } catch (const std::exception &error) {
            std::cerr << "confera-sandbox: a connection failed: " << error.what() << std::endl;
        }
    }

    asio::awaitable<void> outwaitStandardInput()
    {
        std::array<char, 256> ignored{};
        for (;;) {
            const auto [error, size] = co_await standardInput->async_read_some(asio::buffer(ignored), result);
            if (error)
                break;
        }
        io.stop();
    }

    ServerOptions options;
    ServerContext context{{}, {}, {}, workers};
    RequestLog controlLog;
    FaultBoard noFaults;
    std::optional<asio::ssl::context> tls;
    std::size_t connections = 0;

    // Torn down from here upwards: the workers first, for what they have done goes to `io`; then `io` with everything
    // that still waits in it, which may refer to all of the above.
    asio::io_context io{1};
    std::optional<tcp::acceptor> tlsAcceptor;
    std::optional<tcp::acceptor> proxyAcceptor;
    std::optional<tcp::acceptor> controlAcceptor;
    std::optional<asio::signal_set> signals;
    std::optional<asio::posix::stream_descriptor> standardInput;
    asio::thread_pool workers;
};

Server::Server(ServerOptions options)
    : m_state(std::make_unique<State>(std::move(options)))
{
}

Server::~Server() = default;

ServerContext &Server::context()
{
    return m_state->context;
}

Server::Listening Server::listen()
{
    State &s = *m_state;
    const CertificateAuthority authority(s.options.dataFolder / "certificates", s.context.router.hosts());
    s.tls.emplace(authority.serverContext());

    s.tlsAcceptor.emplace(listenOn(s.io, s.options.tlsPort));
    s.proxyAcceptor.emplace(listenOn(s.io, s.options.proxyPort));
    s.controlAcceptor.emplace(listenOn(s.io, s.options.controlPort));

    const auto tls = [&s](std::unique_ptr<TcpStream> stream) {
        return serveTls(std::make_unique<TlsStream>(std::move(*stream), *s.tls), {}, false, s.site());
    };
    const auto proxy = [&s](std::unique_ptr<TcpStream> stream) {
        return serveProxy(std::move(stream), *s.tls, s.site());
    };
    const auto control = [&s](std::unique_ptr<TcpStream> stream) {
        return servePlain(std::move(stream), s.controlSite());
    };
    asio::co_spawn(s.io, s.acceptAll(*s.tlsAcceptor, tls), State::report);
    asio::co_spawn(s.io, s.acceptAll(*s.proxyAcceptor, proxy), State::report);
    asio::co_spawn(s.io, s.acceptAll(*s.controlAcceptor, control), State::report);
    return {s.tlsAcceptor->local_endpoint().port(), s.proxyAcceptor->local_endpoint().port(),
            s.controlAcceptor->local_endpoint().port(), authority.certificateFile()};
}

void Server::run()
{
    m_state->io.run();
    m_state->workers.stop();
    m_state->workers.join();
}

void Server::stop()
{
    m_state->io.stop();
}

void Server::stopOnSignals()
{
    m_state->signals.emplace(m_state->io, SIGTERM, SIGINT);
    m_state->signals->async_wait([this](boost::system::error_code error, int) {
        if (!error)
            stop();
    });
}

void Server::stopWithStandardInput()
{
    m_state->standardInput.emplace(m_state->io, dup(STDIN_FILENO));
    asio::co_spawn(m_state->io, m_state->outwaitStandardInput(), State::report);
}

} // namespace sandbox

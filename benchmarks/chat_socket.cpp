// Acknowledged frames a second over one connection on loopback, without TLS: through the kit's session, which reads
// each into a record and hands it on, and through a Beast client that answers with as many bytes and looks at nothing.
// The server keeps up to 64 frames unanswered.

#include <QCoreApplication>

#include <condition_variable>
#include <mutex>
#include <thread>

#include <benchmark/benchmark.h>

#include "chat/VLWebSocketManager.h"
#include "platform/device/Platform.h"
#include "platform/dispatch/MainQueue.h"
#include "platform/dispatch/SystemClock.h"
#include "tests/platform/net/Frames.h"
#include "tests/platform/net/TappedSockets.h"
#include <boost/asio/connect.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/websocket/stream.hpp>

using namespace Qt::StringLiterals;
using namespace vynlex;

namespace {

namespace asio = boost::asio;

constexpr int batch = 2048;
constexpr int window = 64;

const QByteArray message =
    R"({"event":"chatMessage","data":{"_id":"65f0c1d2e3a4b5c6d7100000","threadId":"65f0c1d2e3a4b5c6d7e8f901",)"
    R"("conferaId":"cf-2210","type":"message","createdBy":"65f0aa11bb22cc33dd44ee55","creatorsName":"Asha",)"
    R"("creatorsLName":"Patel","cOn":"2026-01-31T09:15:00.000+0000","messageComponent":{"text":"hi-IN##)"
    "मुझे दो रातों के लिए एक कमरा चाहिए।"
    R"(","attachments":[]},"recipients":[{"userId":"65f0aa11bb22cc33dd44ee56","isDeleted":false,"isUnread":true}]}})";

/// Sends a batch when told, once the client has logged in, and says when all of it is acknowledged.
class Server {
public:
    ~Server() { stop(); }

    [[nodiscard]] quint16 port() const { return m_server.port(); }

    void start(std::function<void()> whenDone)
    {
        const std::lock_guard lock(m_mutex);
        m_whenDone = std::move(whenDone);
        m_changed.notify_one();
    }

    /// Ends the connection.
    void stop()
    {
        const std::lock_guard lock(m_mutex);
        m_isOver = true;
        m_changed.notify_one();
    }

private:
    void serve(Peer &peer)
    {
        const QByteArray half = frame(TextFrame, message).repeated(window / 2);
        upgrade(peer);
        readFrame(peer);
        while (const auto whenDone = next()) {
            int sent = 0;
            for (int acknowledged = 0; acknowledged < batch; ++acknowledged) {
                if (sent < batch && sent - acknowledged <= window / 2) {
                    peer.write(half);
                    sent += window / 2;
                }
                if (readFrame(peer).opcode != BinaryFrame)
                    return;
            }
            whenDone();
        }
    }

    std::function<void()> next()
    {
        std::unique_lock lock(m_mutex);
        m_changed.wait(lock, [this] { return m_whenDone || m_isOver; });
        return std::exchange(m_whenDone, nullptr);
    }

    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::function<void()> m_whenDone;
    bool m_isOver = false;
    LocalServer m_server{[this](Peer &peer) { serve(peer); }};
};

void measure(benchmark::State &state, Server &server)
{
    const auto play = [&] {
        bool done = false;
        server.start([&] { MainQueue::async([&] { done = true; }); });
        while (!done)
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    };
    play(); // connects, too
    for ([[maybe_unused]] const auto step : state)
        play();
    state.SetItemsProcessed(state.iterations() * batch);
}

void throughTheKit(benchmark::State &state)
{
    Server server;
    Platform platform;
    platform.clock = std::make_shared<SystemClock>();
    platform.socketWorker = TappedSockets::toLoopback(server.port());
    Platform::install(platform);
    VLWebSocketManager session(VLApiServer::demo, u"a.b.c"_s);
    std::size_t characters = 0;
    session.isConnectedToNetwork = true;
    session.onNewChatMessage = [&](const VLChatMessage &received) { characters += received.messageText.size(); };
    session.connect();
    measure(state, server);
    benchmark::DoNotOptimize(characters);
}

/// Reads and answers by turns.
class BareClient {
public:
    explicit BareClient(quint16 port)
        : m_socket(m_loop)
        , m_answer(encodeJson<SocketRequest>(AckSocketRequest(u"chatMessage"_s)))
    {
        m_socket.next_layer().connect({asio::ip::address_v4::loopback(), port});
        m_socket.next_layer().set_option(asio::ip::tcp::no_delay(true));
        m_socket.handshake("127.0.0.1", "/ws");
        m_socket.binary(true);
        write();
    }

    void run() { m_loop.run(); }

private:
    void read()
    {
        m_buffer.clear();
        m_socket.async_read(m_buffer, [this](boost::system::error_code error, std::size_t) {
            if (!error)
                write();
        });
    }
    void write()
    {
        m_socket.async_write(asio::buffer(m_answer.constData(), static_cast<std::size_t>(m_answer.size())),
                             [this](boost::system::error_code error, std::size_t) {
                                 if (!error)
                                     read();
                             });
    }

    asio::io_context m_loop{1};
    boost::beast::websocket::stream<asio::ip::tcp::socket> m_socket;
    boost::beast::flat_buffer m_buffer;
    const QByteArray m_answer;
};

void bare(benchmark::State &state)
{
    Server server;
    std::thread client([port = server.port()] { BareClient(port).run(); });
    measure(state, server);
    server.stop();
    client.join();
}

} // namespace

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    benchmark::RegisterBenchmark("kit", throughTheKit)->UseRealTime()->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("bare", bare)->UseRealTime()->Unit(benchmark::kMillisecond);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return EXIT_SUCCESS;
}

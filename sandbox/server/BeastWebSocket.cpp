#include "sandbox/server/BeastWebSocket.h"

#include <boost/asio/as_tuple.hpp>
#include <boost/asio/experimental/channel.hpp>
#include <boost/asio/use_awaitable.hpp>
#include <boost/beast/core/buffers_to_string.hpp>
#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/ssl.hpp>
#include <boost/beast/websocket/stream.hpp>

#include <utility>

#include "sandbox/server/FrameFilter.h"

namespace sandbox {

namespace asio = boost::asio;
namespace beast = boost::beast;
namespace websocket = boost::beast::websocket;

namespace {

constexpr auto result = asio::as_tuple(asio::use_awaitable);
constexpr std::chrono::seconds closeLimit{10}; // a peer may take so long to answer a close
constexpr std::size_t maxReasonBytes = 123;    // what fits into a close frame

/// Lets one coroutine in at a time, in the order of asking.
class Turnstile {
public:
    explicit Turnstile(const asio::any_io_executor &executor)
        : m_channel(executor, 1)
    {
    }

    class Pass {
    public:
        explicit Pass(Turnstile &turnstile)
            : m_turnstile(turnstile)
        {
        }
        ~Pass()
        {
            m_turnstile.m_channel.try_receive([](auto &&...) {});
        }
        Pass(const Pass &) = delete;
        Pass &operator=(const Pass &) = delete;

    private:
        Turnstile &m_turnstile;
    };

    asio::awaitable<void> enter() { co_await m_channel.async_send(boost::system::error_code{}, result); }

private:
    asio::experimental::channel<void(boost::system::error_code)> m_channel;
};

class BeastWebSocket final : public WebSocketConnection, public std::enable_shared_from_this<BeastWebSocket> {
public:
    BeastWebSocket(std::unique_ptr<TlsStream> stream, RouteFaults faults, RequestLog::Entry &entry)
        : m_tls(std::move(stream))
        , m_ws(*m_tls)
        , m_writers(m_tls->get_executor())
        , m_faults(std::move(faults))
        , m_entry(&entry)
    {
    }

    /// False when the upgrade failed.
    asio::awaitable<bool> accept(const HttpRequest &request, const WebSocketHandler &handler)
    {
        beast::get_lowest_layer(*m_tls).expires_never();
        websocket::stream_base::timeout limits{};
        limits.handshake_timeout = closeLimit;
        limits.idle_timeout = handler.idleLimit.count() > 0 ? handler.idleLimit : websocket::stream_base::none();
        limits.keep_alive_pings = false;
        m_ws.set_option(limits);
        m_ws.read_message_max(handler.maxMessageBytes);
        m_ws.auto_fragment(false);
        const auto [error] = co_await m_ws.async_accept(request, result);
        m_open = !error;
        m_ws.next_layer().beginFrames();
        if (m_faults.dropPongs)
            m_ws.next_layer().dropPongs();
        if (m_open)
            co_await playMessageFaults();
        co_return m_open;
    }

    asio::awaitable<std::optional<WebSocketMessage>> read() override
    {
        const auto self = shared_from_this();
        beast::flat_buffer buffer;
        const auto [error, size] = co_await m_ws.async_read(buffer, result);
        if (error) {
            m_open = false;
            co_return std::nullopt;
        }
        if (m_entry) {
            ++m_entry->messagesReceived;
            m_entry->bytesReceived += size;
        }
        co_return WebSocketMessage{m_ws.got_binary(), beast::buffers_to_string(buffer.data())};
    }

    asio::awaitable<void> sendText(std::string data) override { return send(std::move(data), false); }
    asio::awaitable<void> sendBinary(std::string data) override { return send(std::move(data), true); }

    asio::awaitable<void> close(std::uint16_t code, std::string_view reason) override
    {
        return closeWith(code, std::string(reason));
    }

    void reset() override
    {
        m_open = false;
        resetConnection(beast::get_lowest_layer(*m_tls));
    }

    asio::any_io_executor executor() override { return m_tls->get_executor(); }

    /// The request, and with it the log entry, is over; the connection may be kept a little longer by its writers.
    void forgetEntry() { m_entry = nullptr; }

private:
    asio::awaitable<void> send(std::string data, bool binary)
    {
        const auto self = shared_from_this();
        co_await m_writers.enter();
        const Turnstile::Pass pass(m_writers);
        if (!m_open)
            co_return;
        if (m_faults.emptyBody)
            data.clear();
        if (m_faults.garbledBody)
            data = garbled(std::move(data));
        m_ws.binary(binary);
        if (m_faults.truncate) {
            co_await endWithin(data.substr(0, m_faults.truncate->bytes.value_or(data.size() / 2)));
            co_return;
        }
        const auto [error, size] = co_await m_ws.async_write(asio::buffer(data), result);
        if (error) {
            m_open = false;
            co_return;
        }
        if (m_entry)
            ++m_entry->messagesSent;
        ++m_sent;
        co_await playMessageFaults();
    }

    /// The connection ends without a closing frame in the middle of a message that begins like this.
    asio::awaitable<void> endWithin(std::string beginning)
    {
        m_open = false;
        co_await m_ws.async_write_some(false, asio::buffer(beginning), result);
        boost::system::error_code ignored; // the peer may be gone
        beast::get_lowest_layer(*m_tls).socket().shutdown(asio::socket_base::shutdown_both, ignored);
    }

    asio::awaitable<void> closeWith(std::uint16_t code, std::string reason)
    {
        const auto self = shared_from_this();
        co_await m_writers.enter();
        const Turnstile::Pass pass(m_writers);
        co_await closeNow(code, std::move(reason));
    }

    asio::awaitable<void> closeNow(std::uint16_t code, std::string reason)
    {
        if (!std::exchange(m_open, false))
            co_return;
        if (reason.size() > maxReasonBytes) {
            std::size_t end = maxReasonBytes;
            while (end > 0 && (static_cast<unsigned char>(reason[end]) & 0xC0U) == 0x80U)
                --end; // not inside a character
            reason.resize(end);
        }
        websocket::close_reason why(code);
        why.reason.assign(reason.data(), reason.size());
        co_await m_ws.async_close(why, result);
    }

    asio::awaitable<void> playMessageFaults()
    {
        if (m_faults.silence && m_faults.silence->afterMessages == m_sent)
            m_ws.next_layer().dropEverything();
        if (m_faults.reset && m_faults.reset->afterMessages == m_sent)
            reset();
        if (m_faults.close && m_faults.close->afterMessages == m_sent)
            co_await closeNow(m_faults.close->code, m_faults.close->reason);
    }

    std::unique_ptr<TlsStream> m_tls;
    websocket::stream<FrameFilter> m_ws;
    Turnstile m_writers;
    RouteFaults m_faults;
    RequestLog::Entry *m_entry;
    std::size_t m_sent = 0;
    bool m_open = false;
};

} // namespace

asio::awaitable<void> serveWebSocket(std::unique_ptr<TlsStream> stream, const HttpRequest &request,
                                     const WebSocketHandler &handler, const RouteFaults &faults,
                                     RequestLog::Entry &entry)
{
    const auto connection = std::make_shared<BeastWebSocket>(std::move(stream), faults, entry);
    struct ForgetEntry {
        BeastWebSocket &socket;
        ~ForgetEntry() { socket.forgetEntry(); }
    } const forget{*connection};

    if (!co_await connection->accept(request, handler))
        co_return;
    entry.status = 101;
    co_await handler.serve(connection, request);
    co_await connection->close(1000, "");
}

} // namespace sandbox

#include "platform/net/BeastConnection.h"

#include <QHostAddress>

#include <algorithm>
#include <string>
#include <utility>

#include <boost/asio/as_tuple.hpp>
#include <boost/asio/co_spawn.hpp>
#include <boost/asio/connect.hpp>
#include <boost/asio/detached.hpp>
#include <boost/asio/ssl/context.hpp>
#include <boost/asio/ssl/error.hpp>
#include <boost/asio/use_awaitable.hpp>
#include <boost/asio/write.hpp>
#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/http/empty_body.hpp>
#include <boost/beast/http/read.hpp>
#include <boost/beast/ssl/ssl_stream.hpp>
#include <boost/beast/websocket/ssl.hpp>
#include <boost/beast/websocket/stream.hpp>

namespace vynlex {
namespace {

namespace asio = boost::asio;
namespace beast = boost::beast;
namespace http = boost::beast::http;
namespace ws = boost::beast::websocket;
using boost::system::error_code;

using TlsStream = beast::ssl_stream<beast::tcp_stream>;

constexpr auto asTuple = asio::as_tuple(asio::use_awaitable);
constexpr std::chrono::seconds closingLimit{5};
constexpr std::uint16_t noCode = 1005;
constexpr qsizetype maximumReasonBytes = 123; // what a control frame of 125 bytes leaves beside the code
constexpr std::uint32_t maximumProxyHeaderBytes = 16 * 1024;

bool isAddress(const QString &host)
{
    return !QHostAddress(host).isNull();
}

bool isLoopback(const QString &host)
{
    return host == QLatin1String("localhost") || QHostAddress(host).isLoopback();
}

QByteArray aceHost(const QUrl &url)
{
    return url.host(QUrl::FullyEncoded).toLatin1();
}

QByteArray inBrackets(const QByteArray &host)
{
    return host.contains(':') ? '[' + host + ']' : host;
}

bool canBeSent(const QByteArray &text)
{
    return std::none_of(text.begin(), text.end(), [](char c) { return c == '\r' || c == '\n' || c == '\0'; });
}

/// No more than fits, and no half of a character.
QByteArray shortened(QByteArray reason)
{
    if (reason.size() <= maximumReasonBytes)
        return reason;
    qsizetype size = maximumReasonBytes;
    while (size > 0 && (static_cast<unsigned char>(reason[size]) & 0xC0U) == 0x80U)
        --size;
    return reason.left(size);
}

QString describe(const error_code &error)
{
    return QString::fromStdString(error.message());
}

websocket::Disconnected closeOf(const ws::close_reason &reason)
{
    return {QString::fromUtf8(reason.reason.data(), static_cast<qsizetype>(reason.reason.size())),
            reason.code == ws::close_code::none ? noCode : static_cast<std::uint16_t>(reason.code)};
}

bool breaksTheProtocol(const error_code &error)
{
    // Beast's own limit for its closing handshake ends a connection only after it has refused what it received.
    return error == beast::error::timeout || error == ws::condition::protocol_violation ||
           error == ws::condition::handshake_failed || error == ws::error::message_too_big ||
           error.category() == make_error_code(ws::error::closed).category() ||
           error.category() == make_error_code(http::error::end_of_stream).category();
}

} // namespace

BeastConnection::BeastConnection(asio::io_context &loop)
    : m_loop(loop)
    , m_resolver(loop)
    , m_tcp(loop)
    , m_limit(loop)
    , m_toWrite(loop, asio::steady_timer::time_point::max())
    , m_drop([this] { m_tcp.close(); })
{
}

std::optional<WebSocketError> BeastConnection::fault(const WebSocketRequest &request)
{
    const QUrl &url = request.url;
    const auto invalid = [&](const QString &what) {
        return WebSocketError{WebSocketError::Kind::InvalidUrl, 0, url.host() + QStringLiteral(": ") + what};
    };
    if (!url.isValid() || url.host().isEmpty())
        return invalid(QStringLiteral("the URL is not valid"));
    if (url.scheme() != QLatin1String("wss") && !(url.scheme() == QLatin1String("ws") && isLoopback(url.host())))
        return invalid(QStringLiteral("only wss is spoken, and ws to this device"));
    if (!url.userInfo().isEmpty())
        return invalid(QStringLiteral("a user name in the URL is not sent"));
    for (const auto &[name, value] : request.headers) {
        if (name.isEmpty() || !canBeSent(name) || !canBeSent(value))
            return invalid(QStringLiteral("a header has characters that cannot be sent"));
    }
    return {};
}

void BeastConnection::start(WebSocketRequest request, WebSocketClient::Handler handler)
{
    m_request = std::move(request);
    m_handler = std::make_shared<const WebSocketClient::Handler>(std::move(handler));
    m_phase = Phase::Connecting;
    if (const auto broken = fault(m_request)) {
        asio::post(m_loop, [self = shared_from_this(), broken] { self->end(websocket::Error{*broken}); });
        return;
    }
    limit(m_request.connectTimeout, [](BeastConnection &self) {
        self.fail(WebSocketError::Kind::Timeout, QStringLiteral("no connection in time"));
    });
}

void BeastConnection::open(ConnectionPolicy policy)
{
    if (m_phase != Phase::Connecting)
        return;
    m_policy = std::move(policy);
    asio::co_spawn(
        m_loop, [self = shared_from_this()]() -> asio::awaitable<void> { co_await self->establish(); }, asio::detached);
}

void BeastConnection::send(bool isText, QByteArray data)
{
    if (m_phase == Phase::Ended || m_ownClose)
        return;
    m_outgoing.push_back({isText ? Outgoing::Kind::Text : Outgoing::Kind::Binary, std::move(data), 0});
    m_toWrite.cancel();
}

void BeastConnection::close(std::uint16_t code, const QByteArray &reason)
{
    if (m_phase == Phase::Ended || m_ownClose)
        return;
    m_ownClose = websocket::Disconnected{QString::fromUtf8(reason), code};
    if (m_phase != Phase::Connected) {
        asio::post(m_loop, [self = shared_from_this()] { self->end(websocket::Cancelled{}); });
        return;
    }
    m_outgoing.push_back({Outgoing::Kind::Close, shortened(reason), code});
    m_toWrite.cancel();
    limit(closingLimit, [](BeastConnection &self) { self.end(self.m_peerClose.value_or(*self.m_ownClose)); });
}

void BeastConnection::suggestReconnect()
{
    if (m_phase == Phase::Connected && !m_ownClose)
        emitEvent(websocket::ReconnectSuggested{true});
}

void BeastConnection::abandon()
{
    m_handler.reset();
    end(websocket::Cancelled{}); // Heard by nobody.
}

void BeastConnection::emitEvent(const WebSocketEvent &event)
{
    if (const auto handler = m_handler)
        (*handler)(event);
}

void BeastConnection::end(const WebSocketEvent &event)
{
    if (m_phase == Phase::Ended)
        return;
    m_phase = Phase::Ended;
    m_outgoing.clear();
    m_limit.cancel();
    m_toWrite.cancel();
    m_resolver.cancel();
    m_drop();
    if (const auto handler = std::exchange(m_handler, nullptr))
        (*handler)(event);
}

void BeastConnection::fail(WebSocketError::Kind kind, const QString &what, int httpStatus)
{
    end(websocket::Error{{kind, httpStatus, m_request.url.host() + QStringLiteral(": ") + what}});
}

void BeastConnection::limit(std::chrono::milliseconds time, std::function<void(BeastConnection &)> action)
{
    m_limit.expires_after(time);
    m_limit.async_wait([weak = weak_from_this(), action = std::move(action)](error_code error) {
        const auto self = weak.lock();
        if (!error && self)
            action(*self);
    });
}

std::uint16_t BeastConnection::port() const
{
    return static_cast<std::uint16_t>(m_request.url.port(m_request.url.scheme() == QLatin1String("wss") ? 443 : 80));
}

asio::awaitable<void> BeastConnection::establish()
{
    if (!co_await reach())
        co_return;
    if (m_policy.proxy().kind == ProxyRoute::Kind::Http && !co_await tunnel())
        co_return;
    if (m_request.url.scheme() == QLatin1String("wss")) {
        co_await overTls();
        co_return;
    }
    auto socket = std::make_shared<ws::stream<beast::tcp_stream>>(std::move(m_tcp));
    m_drop = [weak = std::weak_ptr(socket)] {
        if (const auto alive = weak.lock())
            beast::get_lowest_layer(*alive).close();
    };
    co_await talk(std::move(socket));
}

/// Looks the name up and connects to the server, or to the proxy.
asio::awaitable<bool> BeastConnection::reach()
{
    const ProxyRoute &proxy = m_policy.proxy();
    const bool direct = proxy.kind == ProxyRoute::Kind::Direct;
    if (!direct && proxy.kind != ProxyRoute::Kind::Http) {
        fail(WebSocketError::Kind::Proxy,
             QStringLiteral("the application's proxy is not an HTTP proxy; a WebSocket can "
                            "use no other"));
        co_return false;
    }
    const std::string host = direct ? aceHost(m_request.url).toStdString() : proxy.host.toStdString();
    const std::string service = std::to_string(direct ? port() : proxy.port);
    const auto [notFound, endpoints] =
        co_await m_resolver.async_resolve(host, service, asio::ip::resolver_base::numeric_service, asTuple);
    if (m_phase == Phase::Ended)
        co_return false;
    if (notFound) {
        fail(direct ? WebSocketError::Kind::HostNotFound : WebSocketError::Kind::Proxy,
             QStringLiteral("the name %1 is not known").arg(QString::fromStdString(host)));
        co_return false;
    }
    const auto [refused, endpoint] = co_await asio::async_connect(m_tcp.socket(), endpoints, asTuple);
    if (m_phase == Phase::Ended)
        co_return false;
    if (refused) {
        fail(direct ? WebSocketError::Kind::ConnectionFailed : WebSocketError::Kind::Proxy, describe(refused));
        co_return false;
    }
    error_code ignored;
    m_tcp.socket().set_option(asio::ip::tcp::no_delay(true), ignored);
    m_tcp.socket().set_option(asio::socket_base::keep_alive(true), ignored);
    co_return true;
}

asio::awaitable<bool> BeastConnection::tunnel()
{
    const ProxyRoute &proxy = m_policy.proxy();
    const QByteArray authority = inBrackets(aceHost(m_request.url)) + ':' + QByteArray::number(port());
    QByteArray head = "CONNECT " + authority + " HTTP/1.1\r\nHost: " + authority + "\r\n";
    if (!proxy.user.isEmpty())
        head += "Proxy-Authorization: Basic " + (proxy.user + u':' + proxy.password).toUtf8().toBase64() + "\r\n";
    head += "\r\n";
    auto [error, sent] = co_await asio::async_write(
        m_tcp, asio::buffer(head.constData(), static_cast<std::size_t>(head.size())), asTuple);

    http::response_parser<http::empty_body> answer;
    answer.skip(true); // A tunnel has no body, whatever its headers say.
    answer.header_limit(maximumProxyHeaderBytes);
    beast::flat_buffer buffer;
    if (!error) {
        const auto [readError, count] = co_await http::async_read_header(m_tcp, buffer, answer, asTuple);
        error = readError;
    }
    if (m_phase == Phase::Ended)
        co_return false;
    if (error) {
        fail(WebSocketError::Kind::Proxy, QStringLiteral("the proxy: ") + describe(error));
        co_return false;
    }
    const int status = static_cast<int>(answer.get().result_int());
    if (status < 200 || status > 299 || buffer.size() > 0) { // The server has not been asked anything yet.
        fail(WebSocketError::Kind::Proxy, QStringLiteral("the proxy answered %1").arg(status), status);
        co_return false;
    }
    co_return true;
}

asio::awaitable<void> BeastConnection::overTls()
{
    const QByteArray host = aceHost(m_request.url);
    asio::ssl::context context(asio::ssl::context::tls_client);
    if (!m_policy.applyTo(context.native_handle(), host)) {
        fail(WebSocketError::Kind::Tls, QStringLiteral("the name cannot be checked"));
        co_return;
    }
    auto socket = std::make_shared<ws::stream<TlsStream>>(std::move(m_tcp), context);
    m_drop = [weak = std::weak_ptr(socket)] {
        if (const auto alive = weak.lock())
            beast::get_lowest_layer(*alive).close();
    };
    TlsStream &tls = socket->next_layer();
    if (!isAddress(m_request.url.host()))
        SSL_set_tlsext_host_name(tls.native_handle(), host.constData());
    const auto [error] = co_await tls.async_handshake(asio::ssl::stream_base::client, asTuple);
    if (m_phase == Phase::Ended)
        co_return;
    if (error) {
        const long verdict = SSL_get_verify_result(tls.native_handle());
        fail(WebSocketError::Kind::Tls,
             verdict == X509_V_OK ? describe(error) : QString::fromUtf8(X509_verify_cert_error_string(verdict)));
        co_return;
    }
    co_await talk(std::move(socket));
}

template<typename Socket> asio::awaitable<void> BeastConnection::talk(std::shared_ptr<Socket> socket)
{
    if (!co_await upgrade(*socket))
        co_return;
    asio::co_spawn(
        m_loop, [self = shared_from_this(), socket]() -> asio::awaitable<void> { co_await self->write(socket); },
        asio::detached);
    co_await read(*socket);
}

template<typename Socket> asio::awaitable<bool> BeastConnection::upgrade(Socket &socket)
{
    // Beast's own limits stay off until the connection stands: the request's covers everything before.
    auto limits = ws::stream_base::timeout{ws::stream_base::none(), ws::stream_base::none(), false};
    socket.set_option(limits);
    socket.read_message_max(static_cast<std::size_t>(WebSocketClient::maximumMessageBytes));
    socket.auto_fragment(false);
    socket.set_option(ws::stream_base::decorator([this](ws::request_type &request) {
        for (const auto &[name, value] : m_request.headers)
            request.insert(name.toStdString(), value.toStdString());
    }));

    const QUrl &url = m_request.url;
    QByteArray host = inBrackets(aceHost(url));
    if (url.port() != -1)
        host += ':' + QByteArray::number(url.port());
    QByteArray target =
        url.toEncoded(QUrl::FullyEncoded | QUrl::RemoveScheme | QUrl::RemoveAuthority | QUrl::RemoveFragment);
    if (!target.startsWith('/'))
        target.prepend('/');
    ws::response_type answer;
    const auto [error] = co_await socket.async_handshake(answer, host.toStdString(), target.toStdString(), asTuple);
    if (m_phase == Phase::Ended)
        co_return false;
    const int status = static_cast<int>(answer.result_int());
    if (error == ws::error::upgrade_declined && status != 101) {
        fail(WebSocketError::Kind::UpgradeRefused, QStringLiteral("the server answered %1").arg(status), status);
        co_return false;
    }
    if (error) {
        fail(breaksTheProtocol(error) ? WebSocketError::Kind::Protocol : WebSocketError::Kind::Io, describe(error));
        co_return false;
    }
    limits.handshake_timeout = closingLimit;
    socket.set_option(limits);
    // The socket lives as long as the operation that calls this.
    socket.control_callback([this, &socket](ws::frame_type kind, beast::string_view) {
        if (m_phase != Phase::Connected)
            return;
        switch (kind) {
        case ws::frame_type::ping:
            emitEvent(websocket::Ping{});
            break;
        case ws::frame_type::pong:
            emitEvent(websocket::Pong{});
            break;
        case ws::frame_type::close: // Told once the handshake is over, which the peer may leave unfinished.
            m_peerClose = closeOf(socket.reason());
            break;
        }
    });

    m_limit.cancel();
    m_phase = Phase::Connected;
    HttpHeaders headers;
    for (const auto &field : answer)
        headers.emplace_back(QByteArray(field.name_string().data(), static_cast<qsizetype>(field.name_string().size())),
                             QByteArray(field.value().data(), static_cast<qsizetype>(field.value().size())));
    emitEvent(websocket::Connected{std::move(headers)});
    co_return m_phase == Phase::Connected;
}

template<typename Socket> asio::awaitable<void> BeastConnection::read(Socket &socket)
{
    beast::flat_buffer buffer;
    while (m_phase == Phase::Connected) {
        const auto [error, count] = co_await socket.async_read(buffer, asTuple);
        if (m_phase != Phase::Connected)
            co_return;
        if (error) {
            endOfReading(error);
            co_return;
        }
        const auto data = buffer.cdata();
        const QByteArray message(static_cast<const char *>(data.data()), static_cast<qsizetype>(data.size()));
        buffer.consume(buffer.size());
        if (m_ownClose) // The closing frame may still wait behind what was sent before it.
            continue;
        if (socket.got_text() && !message.isValidUtf8()) { // Beast overlooks it when the last frame is empty.
            m_ownClose = websocket::Disconnected{{}, ws::close_code::bad_payload}; // There is one closing frame.
            co_await socket.async_close(ws::close_code::bad_payload, asTuple);
            if (m_phase == Phase::Connected)
                fail(WebSocketError::Kind::Protocol, QStringLiteral("a text is cut off within a character"));
            co_return;
        }
        if (socket.got_text())
            emitEvent(websocket::Text{message});
        else
            emitEvent(websocket::Binary{message});
    }
}

template<typename Socket> asio::awaitable<void> BeastConnection::write(std::shared_ptr<Socket> socket)
{
    while (m_phase == Phase::Connected) {
        if (m_outgoing.empty()) {
            co_await m_toWrite.async_wait(asTuple);
            continue;
        }
        const Outgoing next = std::move(m_outgoing.front());
        m_outgoing.pop_front();
        error_code error;
        if (next.kind == Outgoing::Kind::Close) {
            ws::close_reason reason(static_cast<ws::close_code>(next.code));
            reason.reason.assign(next.data.constData(), static_cast<std::size_t>(next.data.size()));
            co_await socket->async_close(reason, asTuple);
            co_return; // The reader sees the end, or the limit does.
        }
        socket->text(next.kind == Outgoing::Kind::Text);
        std::tie(error, std::ignore) = co_await socket->async_write(
            asio::buffer(next.data.constData(), static_cast<std::size_t>(next.data.size())), asTuple);
        if (error && m_phase == Phase::Connected) {
            // As a rule the reader knows better why: a closing frame may be waiting to be read.
            limit(closingLimit,
                  [error](BeastConnection &self) { self.fail(WebSocketError::Kind::Io, describe(error)); });
            co_return;
        }
    }
}

void BeastConnection::endOfReading(error_code error)
{
    if (m_peerClose)
        end(*m_peerClose);
    else if (m_ownClose)
        end(*m_ownClose);
    else if (error == asio::error::eof || error == asio::ssl::error::stream_truncated)
        end(websocket::PeerClosed{});
    else
        fail(breaksTheProtocol(error) ? WebSocketError::Kind::Protocol : WebSocketError::Kind::Io, describe(error));
}

} // namespace vynlex

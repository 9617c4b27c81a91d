#include "sandbox/server/HttpSession.h"

#include <boost/asio/as_tuple.hpp>
#include <boost/asio/steady_timer.hpp>
#include <boost/asio/this_coro.hpp>
#include <boost/asio/use_awaitable.hpp>
#include <boost/asio/write.hpp>
#include <boost/beast/http/parser.hpp>
#include <boost/beast/http/read.hpp>
#include <boost/beast/http/write.hpp>
#include <boost/beast/ssl.hpp>
#include <boost/beast/websocket/rfc6455.hpp>

#include <algorithm>
#include <array>
#include <iostream>
#include <limits>
#include <optional>
#include <sstream>
#include <type_traits>
#include <utility>

#include "sandbox/server/BeastWebSocket.h"
#include "sandbox/server/Pattern.h"
#include "sandbox/server/Target.h"

namespace sandbox {

namespace asio = boost::asio;
namespace beast = boost::beast;
namespace http = boost::beast::http;
using Error = boost::system::error_code;

namespace {

constexpr auto result = asio::as_tuple(asio::use_awaitable);

HttpResponse errorResponse(unsigned status, std::string_view what)
{
    return jsonResponse(status, R"({"error":{"code":)" + std::to_string(status) + R"(,"message":")" +
                                    std::string(what) + R"("}})");
}

/// One connection; `Stream` is TcpStream or TlsStream.
template<class Stream> class Session {
public:
    Session(std::unique_ptr<Stream> stream, Site site, std::string serverName, bool throughProxy)
        : m_stream(std::move(stream))
        , m_site(site)
        , m_serverName(std::move(serverName))
        , m_throughProxy(throughProxy)
    {
    }

    asio::awaitable<void> run()
    {
        bool more = true; // GCC 12 miscompiles a co_await inside a loop's condition
        while (more)
            more = co_await serveOne();
        if (m_stream)
            co_await end();
    }

private:
    TcpStream &tcp() { return beast::get_lowest_layer(*m_stream); }

    /// True when another request may follow.
    asio::awaitable<bool> serveOne()
    {
        http::request_parser<http::string_body> parser;
        parser.header_limit(static_cast<std::uint32_t>(m_site.limits.headerBytes));
        parser.body_limit(m_site.limits.bodyBytes);
        tcp().expires_after(m_site.limits.header);
        const auto [headerError, headerSize] = co_await http::async_read_header(*m_stream, m_buffer, parser, result);
        if (headerError)
            co_return co_await refuse(headerError);

        tcp().expires_after(m_site.limits.body);
        if (beast::iequals(parser.get()[http::field::expect], "100-continue")) {
            constexpr std::string_view goOn = "HTTP/1.1 100 Continue\r\n\r\n";
            co_await asio::async_write(*m_stream, asio::buffer(goOn), result);
        }
        const auto [bodyError, bodySize] = co_await http::async_read(*m_stream, m_buffer, parser, result);
        if (bodyError)
            co_return co_await refuse(bodyError);
        const HttpRequest request = parser.release();
        co_return co_await answer(request);
    }

    /// What cannot be read as a request; the connection ends after it.
    asio::awaitable<bool> refuse(Error error)
    {
        std::optional<HttpResponse> response;
        if (error == http::error::header_limit || error == http::error::buffer_overflow)
            response = errorResponse(431, "the request's header is too large");
        else if (error == http::error::body_limit)
            response = errorResponse(413, "the request's body is too large");
        else if (error != http::error::end_of_stream && error != http::error::partial_message &&
                 error.category() == http::make_error_code(http::error::bad_method).category())
            response = errorResponse(400, "not a valid HTTP request");
        if (response) {
            tcp().expires_after(m_site.limits.handshake);
            response->keep_alive(false);
            response->prepare_payload();
            co_await http::async_write(*m_stream, *response, result);
        }
        co_return false;
    }

    asio::awaitable<bool> answer(const HttpRequest &request)
    {
        const std::string_view host = hostWithoutPort(request[http::field::host]);
        RequestLog::Entry entry = RequestLog::entryFor(request, host, m_throughProxy);
        struct AddToLog { // also when the session is torn down in the middle
            RequestLog &log;
            RequestLog::Entry &entry;
            bool added = false;
            void now()
            {
                if (!std::exchange(added, true))
                    log.add(std::move(entry));
            }
            ~AddToLog() { now(); }
        } addToLog{m_site.log, entry};

        const auto target = Target::parse(request.target());
        const std::string path = target ? target->path : std::string();
        const RouteFaults faults = m_site.faults.takeForRoute(host, path);
        entry.faults = faults.kinds;

        tcp().expires_after(m_site.limits.answer);
        if (faults.bytesPerSecond)
            tcp().rate_policy().write_limit(*faults.bytesPerSecond);
        if (faults.latency.count() > 0) {
            asio::steady_timer timer(m_stream->get_executor(), faults.latency);
            co_await timer.async_wait(result);
        }
        if (faults.reset && !faults.reset->afterBytes && !faults.reset->afterMessages) {
            resetConnection(tcp());
            m_stream.reset();
            co_return false;
        }
        if (faults.silence && !faults.silence->afterMessages) {
            co_await outwait();
            co_return false;
        }

        std::optional<HttpResponse> response;
        const bool upgrade = beast::websocket::is_upgrade(request);
        const WebSocketHandler *webSocket = upgrade ? m_site.router.findWebSocket(host, path) : nullptr;
        if (faults.status)
            response = textResponse(faults.status->code, faults.status->body);
        else if (!target || request[http::field::host].empty())
            response = errorResponse(400, target ? "the Host header is missing" : "the request's target is malformed");
        else if (!m_serverName.empty() && !beast::iequals(m_serverName, host))
            response = errorResponse(421, "the host is not the one of the TLS connection");
        else if (webSocket && webSocket->refuse)
            response = webSocket->refuse(request);

        if (!response && webSocket) {
            if constexpr (std::is_same_v<Stream, TlsStream>) {
                entry.webSocket = true;
                co_await serveWebSocket(std::move(m_stream), request, *webSocket, faults, entry);
                co_return false;
            }
        }
        if (!response)
            response = co_await handled(request, host, path);
        entry.status = response->result_int();
        addToLog.now(); // so that who has the answer finds its request in the log
        co_return co_await send(request, std::move(*response), faults);
    }

    asio::awaitable<HttpResponse> handled(const HttpRequest &request, std::string_view host, const std::string &path)
    {
        const HttpHandler *handler = m_site.router.findHttp(host, request.method_string(), path);
        if (!handler) {
            if (!m_site.router.hasHost(host))
                co_return errorResponse(404, "no such host here");
            if (!m_site.router.hasPath(host, path))
                co_return errorResponse(404, "Resource not found");
            if (m_site.router.findWebSocket(host, path))
                co_return errorResponse(426, "this is a WebSocket end point");
            co_return errorResponse(405, "the method is not supported here");
        }
        try {
            co_return co_await (*handler)(request);
        } catch (const std::exception &error) {
            std::cerr << "confera-sandbox: " << host << path << ": " << error.what() << std::endl;
        }
        co_return errorResponse(500, "the sandbox failed; its standard error output has the reason");
    }

    asio::awaitable<bool> send(const HttpRequest &request, HttpResponse response, const RouteFaults &faults)
    {
        response.version(request.version());
        response.keep_alive(request.keep_alive() && !faults.truncate);
        response.set(http::field::server, "confera-sandbox");
        if (faults.emptyBody)
            response.body().clear();
        if (faults.garbledBody)
            response.body() = garbled(std::move(response.body()));
        response.prepare_payload();
        const std::size_t bodySize = response.body().size();
        if (request.method() == http::verb::head)
            response.body().clear();
        std::ostringstream text;
        text << response;
        std::string bytes = std::move(text).str();

        const std::size_t headerSize = bytes.size() - response.body().size();
        if (faults.truncate)
            bytes.resize(std::min(bytes.size(), headerSize + faults.truncate->bytes.value_or(bodySize / 2)));
        const bool resets = faults.reset && faults.reset->afterBytes;
        if (resets)
            bytes.resize(std::min(bytes.size(), *faults.reset->afterBytes));

        const auto [error, size] = co_await asio::async_write(*m_stream, asio::buffer(bytes), result);
        if (resets) {
            resetConnection(tcp());
            m_stream.reset();
            co_return false;
        }
        tcp().rate_policy().write_limit(std::numeric_limits<std::size_t>::max());
        co_return !error && response.keep_alive();
    }

    /// Until the peer gives up.
    asio::awaitable<void> outwait()
    {
        std::array<char, 4096> ignored{};
        for (;;) {
            const auto [error, size] = co_await m_stream->async_read_some(asio::buffer(ignored), result);
            if (error)
                co_return;
        }
    }

    asio::awaitable<void> end()
    {
        tcp().expires_after(m_site.limits.handshake);
        if constexpr (std::is_same_v<Stream, TlsStream>)
            co_await m_stream->async_shutdown(result);
        Error ignored; // the peer may be gone
        tcp().socket().shutdown(asio::socket_base::shutdown_send, ignored);
    }

    std::unique_ptr<Stream> m_stream;
    Site m_site;
    std::string m_serverName;
    bool m_throughProxy;
    beast::flat_buffer m_buffer;
};

} // namespace

asio::awaitable<void> servePlain(std::unique_ptr<TcpStream> stream, Site site)
{
    Session<TcpStream> session(std::move(stream), site, "", false);
    co_await session.run();
}

asio::awaitable<void> serveTls(std::unique_ptr<TlsStream> stream, beast::flat_buffer early, bool throughProxy,
                               Site site)
{
    beast::get_lowest_layer(*stream).expires_after(site.limits.handshake);
    const auto [error, used] = co_await stream->async_handshake(asio::ssl::stream_base::server, early.data(), result);
    if (error)
        co_return; // the client's own affair: it does not trust the authority, or is no TLS client
    const char *name = SSL_get_servername(stream->native_handle(), TLSEXT_NAMETYPE_host_name);
    Session<TlsStream> session(std::move(stream), site, name ? name : "", throughProxy);
    co_await session.run();
}

HttpResponse textResponse(unsigned status, std::string text)
{
    HttpResponse response;
    response.result(status);
    response.set(http::field::content_type, "text/plain; charset=utf-8");
    response.body() = std::move(text);
    return response;
}

HttpResponse jsonResponse(unsigned status, std::string json)
{
    HttpResponse response;
    response.result(status);
    response.set(http::field::content_type, "application/json; charset=utf-8");
    response.body() = std::move(json);
    return response;
}

} // namespace sandbox

#include "sandbox/server/ConnectProxy.h"

#include <boost/asio/as_tuple.hpp>
#include <boost/asio/buffer.hpp>
#include <boost/asio/use_awaitable.hpp>
#include <boost/asio/write.hpp>
#include <boost/beast/http/empty_body.hpp>
#include <boost/beast/http/parser.hpp>
#include <boost/beast/http/read.hpp>
#include <boost/beast/http/write.hpp>

#include <string>
#include <utility>

#include "sandbox/server/Pattern.h"

namespace sandbox {

namespace asio = boost::asio;
namespace beast = boost::beast;
namespace http = boost::beast::http;

namespace {

constexpr auto result = asio::as_tuple(asio::use_awaitable);

asio::awaitable<void> refuse(TcpStream &stream, unsigned status, std::string why)
{
    HttpResponse response = textResponse(status, std::move(why));
    response.keep_alive(false);
    response.prepare_payload();
    co_await http::async_write(stream, response, result);
    boost::system::error_code ignored; // the peer may be gone
    stream.socket().shutdown(asio::socket_base::shutdown_send, ignored);
}

} // namespace

asio::awaitable<void> serveProxy(std::unique_ptr<TcpStream> stream, asio::ssl::context &tls, Site site)
{
    beast::flat_buffer buffer;
    http::request_parser<http::empty_body> parser;
    parser.header_limit(static_cast<std::uint32_t>(site.limits.headerBytes));
    stream->expires_after(site.limits.header);
    const auto [error, size] = co_await http::async_read_header(*stream, buffer, parser, result);
    if (error) {
        if (error == http::error::header_limit)
            co_await refuse(*stream, 431, "The header is too large.\n");
        co_return;
    }
    const auto &request = parser.get();
    if (request.method() != http::verb::connect) {
        co_await refuse(*stream, 405, "This proxy of confera-sandbox only takes CONNECT.\n");
        co_return;
    }
    const std::string host{hostWithoutPort(request.target())};
    if (host.empty() || !site.router.hasHost(host)) {
        co_await refuse(*stream, 502, "confera-sandbox does not stand in for this host, and connects to no other.\n");
        co_return;
    }
    constexpr std::string_view established = "HTTP/1.1 200 Connection established\r\n\r\n";
    const auto [writeError, written] = co_await asio::async_write(*stream, asio::buffer(established), result);
    if (!writeError)
        co_await serveTls(std::make_unique<TlsStream>(std::move(*stream), tls), std::move(buffer), true, site);
}

} // namespace sandbox

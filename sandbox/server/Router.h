#pragma once

#include <boost/asio/awaitable.hpp>
#include <boost/beast/http/message.hpp>
#include <boost/beast/http/string_body.hpp>

#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "sandbox/server/WebSocketConnection.h"

namespace sandbox {

using HttpRequest = boost::beast::http::request<boost::beast::http::string_body>;
using HttpResponse = boost::beast::http::response<boost::beast::http::string_body>;

/// Answers one request. Runs on the server's I/O thread. The server fills in version, keep-alive and length. The
/// request is alive until the answer is given.
using HttpHandler = std::function<boost::asio::awaitable<HttpResponse>(const HttpRequest &)>;

/// A WebSocket end point. `refuse` (may be empty) sees the upgrade request first: an answer from it (401, 404, ...)
/// goes out instead of the upgrade. `serve` then owns the conversation and returns when it is over; the request is
/// alive until then. What is left of the connection is closed after it.
struct WebSocketHandler {
    std::function<std::optional<HttpResponse>(const HttpRequest &)> refuse;
    std::function<boost::asio::awaitable<void>(std::shared_ptr<WebSocketConnection>, const HttpRequest &)> serve;

    /// A longer message ends the connection with code 1009.
    std::size_t maxMessageBytes = std::size_t{1024} * 1024;
    /// A peer that sends nothing for so long is dropped. The speech service's documented limit is 180 s.
    std::chrono::seconds idleLimit{180};
};

/// Which handler answers for a host, a method and a path; of several that match, the one added first. Host patterns are
/// exact names, or begin with "*." for one label ("*.stt.speech.microsoft.com"). Paths are exact, or end in "/*". The
/// method "*" is any. A request to a loopback name (localhost, 127.0.0.1) is to every host: its path decides.
class Router {
public:
    void addHttp(std::string host, std::string method, std::string path, HttpHandler handler);
    void addWebSocket(std::string host, std::string path, WebSocketHandler handler);

    /// nullptr when there is none.
    [[nodiscard]] const HttpHandler *findHttp(std::string_view host, std::string_view method,
                                              std::string_view path) const;
    [[nodiscard]] const WebSocketHandler *findWebSocket(std::string_view host, std::string_view path) const;

    /// True when some route has that host and path, whatever its method or kind.
    [[nodiscard]] bool hasPath(std::string_view host, std::string_view path) const;
    [[nodiscard]] bool hasHost(std::string_view host) const;

    /// Every host pattern added, sorted, each once: for the certificate's names.
    [[nodiscard]] std::vector<std::string> hosts() const;

private:
    struct Route;
    std::vector<std::shared_ptr<const Route>> m_routes;
};

} // namespace sandbox

#pragma once

#include <boost/asio/awaitable.hpp>
#include <boost/beast/http/message.hpp>
#include <boost/beast/http/string_body.hpp>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "sandbox/server/WebSocketConnection.h"

namespace sandbox {

using HttpRequest = boost::beast::http::request<boost::beast::http::string_body>;
using HttpResponse = boost::beast::http::response<boost::beast::http::string_body>;

/// Answers one request. Runs on the connection's strand.
using HttpHandler = std::function<boost::asio::awaitable<HttpResponse>(const HttpRequest &)>;

/// A WebSocket end point. `refuse` sees the upgrade request first: an answer from it (401, 404, ...) goes out instead
/// of the upgrade. `serve` then owns the conversation and returns when it is over.
struct WebSocketHandler {
    std::function<std::optional<HttpResponse>(const HttpRequest &)> refuse;
    std::function<boost::asio::awaitable<void>(std::shared_ptr<WebSocketConnection>, const HttpRequest &)> serve;
};

/// Which handler answers for a host, a method and a path. Host patterns are exact names, or begin with "*." for one
/// label
/// ("*.stt.speech.microsoft.com"). Paths are exact, or end in "/*".
class Router {
public:
    void addHttp(std::string host, std::string method, std::string path, HttpHandler handler);
    void addWebSocket(std::string host, std::string path, WebSocketHandler handler);

    /// nullptr when there is none.
    [[nodiscard]] const HttpHandler *findHttp(std::string_view host, std::string_view method,
                                              std::string_view path) const;
    [[nodiscard]] const WebSocketHandler *findWebSocket(std::string_view host, std::string_view path) const;

    /// Every host pattern added, for the certificate's names.
    [[nodiscard]] std::vector<std::string> hosts() const;

private:
    struct Route;
    std::vector<std::shared_ptr<const Route>> m_routes;
};

} // namespace sandbox

#include "sandbox/backend/BackendRoutes.h"

#include <boost/json/serialize.hpp>

#include <memory>
#include <string>
#include <utility>

#include "sandbox/backend/BackendHosts.h"
#include "sandbox/server/HttpSession.h"
#include "sandbox/server/Pattern.h"
#include "sandbox/server/Target.h"

namespace sandbox {

namespace asio = boost::asio;
namespace http = boost::beast::http;

namespace {

constexpr std::size_t largestFrame = std::size_t{64} * 1024; // of a client's, which hold a token at most

ApiRequest apiRequest(const HttpRequest &request)
{
    const auto header = [&](const auto &name) -> std::optional<std::string> {
        const auto field = request.find(name);
        if (field == request.end())
            return std::nullopt;
        return std::string(field->value());
    };
    ApiRequest api;
    api.method = std::string(request.method_string());
    if (auto target = Target::parse(request.target())) { // always: it has led here
        api.path = std::move(target->path);
        api.query = std::move(target->query);
    }
    api.contentType = header(http::field::content_type);
    api.deviceId = header("deviceId");
    api.source = header("x-source");
    api.authorization = header(http::field::authorization);
    api.body = request.body();
    return api;
}

WebSocketHandler socketHandler(const std::shared_ptr<SocketService> &service)
{
    WebSocketHandler handler;
    handler.refuse = [](const HttpRequest &request) -> std::optional<HttpResponse> {
        if (request.target().find('?') == std::string_view::npos)
            return std::nullopt;
        return textResponse(400, "the socket takes no query");
    };
    handler.serve = [service](std::shared_ptr<WebSocketConnection> connection,
                              const HttpRequest &request) -> asio::awaitable<void> {
        std::string host(hostWithoutPort(request[http::field::host]));
        co_await std::make_shared<SocketSession>(service, std::move(connection), std::move(host))->serve();
    };
    handler.maxMessageBytes = largestFrame;
    handler.idleLimit = service->limits.silence;
    return handler;
}

} // namespace

void addBackendRoutes(ServerContext &server, BackendApi &api, SocketLimits limits)
{
    const auto service = std::make_shared<SocketService>(SocketService{server, api, limits});
    const HttpHandler answer = [service](const HttpRequest &request) -> asio::awaitable<HttpResponse> {
        // On a worker, for it may wait for the disk. By name: GCC 12 destroys a closure within a co_await twice.
        auto work = [&api = service->api, asked = apiRequest(request)] { return api.answer(asked); };
        ApiAnswer given = co_await service->server.offload(std::move(work));
        service->hub.push(service->api.takePushes());
        co_return jsonResponse(given.status, std::move(given.body));
    };
    for (const BackendHost &host : backendHosts) {
        server.router.addHttp(std::string(host.rest), "*", "/api/*", answer);
        server.router.addWebSocket(std::string(host.socket), "/ws", socketHandler(service));
    }
    const auto sessions = [service](const HttpRequest &) -> asio::awaitable<HttpResponse> {
        co_return jsonResponse(200, boost::json::serialize(service->hub.state()));
    };
    server.control.addHttp("localhost", "GET", "/sessions", sessions);
}

} // namespace sandbox

#include "sandbox/backend/BackendRoutes.h"

#include <string>
#include <utility>

#include "sandbox/backend/BackendHosts.h"
#include "sandbox/server/HttpSession.h"
#include "sandbox/server/Target.h"

namespace sandbox {

namespace asio = boost::asio;
namespace http = boost::beast::http;

namespace {

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

} // namespace

void addBackendRoutes(ServerContext &server, BackendApi &api)
{
    const HttpHandler answer = [&server, &api](const HttpRequest &request) -> asio::awaitable<HttpResponse> {
        // On a worker, for it may wait for the disk. By name: GCC 12 destroys a closure within a co_await twice.
        auto work = [&api, asked = apiRequest(request)] { return api.answer(asked); };
        ApiAnswer given = co_await server.offload(std::move(work));
        co_return jsonResponse(given.status, std::move(given.body));
    };
    for (const BackendHost &host : backendHosts)
        server.router.addHttp(std::string(host.rest), "*", "/api/*", answer);
}

} // namespace sandbox

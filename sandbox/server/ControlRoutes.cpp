#include "sandbox/server/ControlRoutes.h"

#include <boost/json/array.hpp>
#include <boost/json/parse.hpp>
#include <boost/json/serialize.hpp>

#include <stdexcept>
#include <string>
#include <utility>

#include "sandbox/server/HttpSession.h"

namespace sandbox {

namespace asio = boost::asio;
namespace json = boost::json;

namespace {

HttpResponse badRequest(const std::string &why)
{
    return jsonResponse(400, json::serialize(json::object{{"error", why}}));
}

HttpResponse added(FaultBoard &faults, const std::string &body)
{
    boost::system::error_code error;
    const json::value given = json::parse(body, error);
    if (error)
        return badRequest("not JSON: " + error.message());
    try {
        if (given.is_array())
            faults.add(given.get_array());
        else
            faults.add(json::array{given});
    } catch (const std::invalid_argument &wrong) {
        return badRequest(wrong.what());
    }
    return jsonResponse(200, json::serialize(faults.list()));
}

} // namespace

void addControlRoutes(ServerContext &context)
{
    const std::string host = "localhost";
    Router &router = context.control;
    FaultBoard &faults = context.faults;
    const RequestLog &log = context.log;
    router.addHttp(host, "POST", "/faults", [&faults](const HttpRequest &request) -> asio::awaitable<HttpResponse> {
        co_return added(faults, request.body());
    });
    router.addHttp(host, "GET", "/faults", [&faults](const HttpRequest &) -> asio::awaitable<HttpResponse> {
        co_return jsonResponse(200, json::serialize(faults.list()));
    });
    router.addHttp(host, "DELETE", "/faults", [&faults](const HttpRequest &) -> asio::awaitable<HttpResponse> {
        faults.clear();
        co_return jsonResponse(200, "[]");
    });
    router.addHttp(host, "GET", "/state", [&faults, &log](const HttpRequest &) -> asio::awaitable<HttpResponse> {
        json::object state;
        state["totals"] = log.totals();
        state["faults"] = faults.list();
        co_return jsonResponse(200, json::serialize(state));
    });
    router.addHttp(host, "GET", "/requests", [&log](const HttpRequest &) -> asio::awaitable<HttpResponse> {
        co_return jsonResponse(200, json::serialize(log.recent()));
    });
    router.addHttp(host, "GET", "/problems", [&log](const HttpRequest &) -> asio::awaitable<HttpResponse> {
        co_return jsonResponse(200, json::serialize(log.problems()));
    });
}

} // namespace sandbox

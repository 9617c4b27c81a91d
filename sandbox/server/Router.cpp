#include "sandbox/server/Router.h"

#include <algorithm>
#include <utility>
#include <variant>

#include "sandbox/server/Pattern.h"

namespace sandbox {

struct Router::Route {
    std::string host;
    std::string method;
    std::string path;
    std::variant<HttpHandler, WebSocketHandler> handler;

    [[nodiscard]] bool answersTo(std::string_view name) const
    {
        return isLoopbackName(name) || matchesHost(host, name);
    }
    [[nodiscard]] bool answersTo(std::string_view name, std::string_view where) const
    {
        return answersTo(name) && matchesPath(path, where);
    }
};

void Router::addHttp(std::string host, std::string method, std::string path, HttpHandler handler)
{
    m_routes.push_back(
        std::make_shared<const Route>(Route{std::move(host), std::move(method), std::move(path), std::move(handler)}));
}

void Router::addWebSocket(std::string host, std::string path, WebSocketHandler handler)
{
    m_routes.push_back(
        std::make_shared<const Route>(Route{std::move(host), "GET", std::move(path), std::move(handler)}));
}

const HttpHandler *Router::findHttp(std::string_view host, std::string_view method, std::string_view path) const
{
    for (const auto &route : m_routes) {
        const auto *handler = std::get_if<HttpHandler>(&route->handler);
        if (handler && route->answersTo(host, path) && (route->method == "*" || route->method == method))
            return handler;
    }
    return nullptr;
}

const WebSocketHandler *Router::findWebSocket(std::string_view host, std::string_view path) const
{
    for (const auto &route : m_routes) {
        const auto *handler = std::get_if<WebSocketHandler>(&route->handler);
        if (handler && route->answersTo(host, path))
            return handler;
    }
    return nullptr;
}

bool Router::hasPath(std::string_view host, std::string_view path) const
{
    return std::any_of(m_routes.begin(), m_routes.end(),
                       [&](const auto &route) { return route->answersTo(host, path); });
}

bool Router::hasHost(std::string_view host) const
{
    return std::any_of(m_routes.begin(), m_routes.end(), [&](const auto &route) { return route->answersTo(host); });
}

std::vector<std::string> Router::hosts() const
{
    std::vector<std::string> names;
    for (const auto &route : m_routes)
        names.push_back(route->host);
    std::sort(names.begin(), names.end());
    names.erase(std::unique(names.begin(), names.end()), names.end());
    return names;
}

} // namespace sandbox

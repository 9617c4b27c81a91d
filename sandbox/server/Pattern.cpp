#include "sandbox/server/Pattern.h"

#include <boost/beast/core/string.hpp>

#include <algorithm>

namespace sandbox {

namespace beast = boost::beast;

bool matchesHost(std::string_view pattern, std::string_view host)
{
    if (pattern == "*")
        return true;
    if (!pattern.starts_with("*."))
        return beast::iequals(pattern, host);
    const auto dot = host.find('.');
    return dot != std::string_view::npos && dot > 0 && beast::iequals(pattern.substr(1), host.substr(dot));
}

bool matchesPath(std::string_view pattern, std::string_view path)
{
    if (pattern == "*")
        return true;
    if (pattern.ends_with("/*"))
        return path.starts_with(pattern.substr(0, pattern.size() - 1));
    return pattern == path;
}

bool isLoopbackName(std::string_view host)
{
    return beast::iequals(host, "localhost") || host == "127.0.0.1" || host == "::1";
}

std::string_view hostWithoutPort(std::string_view authority)
{
    if (authority.starts_with('[')) {
        const auto end = authority.find(']');
        return end == std::string_view::npos ? std::string_view{} : authority.substr(1, end - 1);
    }
    return authority.substr(0, std::min(authority.find(':'), authority.size()));
}

} // namespace sandbox

#pragma once

#include <string_view>

namespace sandbox {

/// Hosts without regard to case: "*" is any, "*.rest" any one label in front of ".rest", otherwise the exact name.
[[nodiscard]] bool matchesHost(std::string_view pattern, std::string_view host);

/// Paths: "*" is any, "prefix/*" whatever begins with "prefix/", otherwise the exact path.
[[nodiscard]] bool matchesPath(std::string_view pattern, std::string_view path);

/// The names under which this machine reaches itself ("localhost", "127.0.0.1", "::1").
[[nodiscard]] bool isLoopbackName(std::string_view host);

/// The name in a Host header or an authority: without the port, without brackets.
[[nodiscard]] std::string_view hostWithoutPort(std::string_view authority);

} // namespace sandbox

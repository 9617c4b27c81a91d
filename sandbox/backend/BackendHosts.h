#pragma once

#include <array>
#include <string_view>

namespace sandbox {

/// One deployment of the backend: the host of its REST interface and that of its socket.
struct BackendHost {
    std::string_view rest;
    std::string_view socket;
};

/// The kit names the same hosts in its own table. All of them are served by one backend here.
inline constexpr std::array<BackendHost, 6> backendHosts{{
    {"staging.confera.example", "socket.staging.confera.example"},
    {"prestage.confera.example", "socket.prestage.confera.example"},
    {"rc.confera.example", "socket.rc.confera.example"},
    {"app.confera.example", "socket.app.confera.example"},
    {"groups.confera.example", "socket.groups.confera.example"},
    {"demo.confera.example", "socket.demo.confera.example"},
}};

} // namespace sandbox

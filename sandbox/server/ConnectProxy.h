#pragma once

#include <boost/asio/awaitable.hpp>
#include <boost/asio/ssl/context.hpp>

#include <memory>

#include "sandbox/server/HttpSession.h"

namespace sandbox {

/// One connection to the HTTP proxy port: CONNECT to a host that has routes, whatever the port, is answered with 200
/// and goes on as a connection to the TLS listener would; any other host gets 502, as from a proxy that cannot resolve
/// it. Nothing is ever connected to. `authority` HOST:PORT; requests other than CONNECT get 405.
boost::asio::awaitable<void> serveProxy(std::unique_ptr<TcpStream> stream, boost::asio::ssl::context &tls, Site site);

} // namespace sandbox

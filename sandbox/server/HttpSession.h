#pragma once

#include <boost/asio/awaitable.hpp>
#include <boost/beast/core/flat_buffer.hpp>

#include <chrono>
#include <cstddef>
#include <memory>
#include <string>

#include "sandbox/server/FaultBoard.h"
#include "sandbox/server/RequestLog.h"
#include "sandbox/server/Router.h"
#include "sandbox/server/Streams.h"

namespace sandbox {

/// What one request may cost.
struct HttpLimits {
    std::chrono::milliseconds handshake{10'000}; ///< TLS
    std::chrono::milliseconds header{30'000};    ///< from the end of the request before; idling included
    std::chrono::milliseconds body{30'000};
    std::chrono::milliseconds answer{600'000}; ///< to send it, faults included
    std::size_t headerBytes = std::size_t{16} * 1024;
    std::size_t bodyBytes = std::size_t{1024} * 1024;
};

/// What a listener answers with. All must outlive the sessions.
struct Site {
    const Router &router;
    FaultBoard &faults;
    RequestLog &log;
    const HttpLimits &limits;
};

/// Serves the requests of one connection until it ends. Never throws.
boost::asio::awaitable<void> servePlain(std::unique_ptr<TcpStream> stream, Site site);

/// The same behind TLS, with WebSockets. `early` holds what has been read ahead of the TLS handshake.
boost::asio::awaitable<void> serveTls(std::unique_ptr<TlsStream> stream, boost::beast::flat_buffer early,
                                      bool throughProxy, Site site);

/// An answer of plain text, and one of JSON.
HttpResponse textResponse(unsigned status, std::string text);
HttpResponse jsonResponse(unsigned status, std::string json);

} // namespace sandbox

#pragma once

#include <boost/asio/awaitable.hpp>

#include <memory>

#include "sandbox/server/FaultBoard.h"
#include "sandbox/server/RequestLog.h"
#include "sandbox/server/Router.h"
#include "sandbox/server/Streams.h"

namespace sandbox {

/// Accepts the upgrade that `request` asks for and lets `handler` serve it, with `faults` beneath. Counts the messages
/// into `entry`. Returns when the connection is over.
boost::asio::awaitable<void> serveWebSocket(std::unique_ptr<TlsStream> stream, const HttpRequest &request,
                                            const WebSocketHandler &handler, const RouteFaults &faults,
                                            RequestLog::Entry &entry);

} // namespace sandbox

#pragma once

#include "sandbox/backend/BackendApi.h"
#include "sandbox/backend/SocketSession.h"
#include "sandbox/server/ServerContext.h"

namespace sandbox {

/// The REST interface, under "/api/" of every host of the backend, and the socket, "/ws" of its socket host. On the
/// control port GET /sessions tells of every open socket: an array of SocketSession::state. `api` must outlive the
/// server, and serves no other.
void addBackendRoutes(ServerContext &server, BackendApi &api, SocketLimits limits = {});

} // namespace sandbox

#pragma once

#include "sandbox/backend/BackendApi.h"
#include "sandbox/server/ServerContext.h"

namespace sandbox {

/// The REST interface, under "/api/" of every host of the backend. `api` must outlive the server.
void addBackendRoutes(ServerContext &server, BackendApi &api);

} // namespace sandbox

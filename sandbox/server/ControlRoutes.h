#pragma once

#include "sandbox/server/FaultBoard.h"
#include "sandbox/server/RequestLog.h"
#include "sandbox/server/Router.h"

namespace sandbox {

/// The routes of the control port, under the loopback names only, so that a web page in a browser cannot reach them
/// under a name of its own:
///
/// - POST /faults: one fault (FaultBoard::add) or an array of them, all or none; 400 with the reason otherwise
/// - GET /faults, DELETE /faults
/// - GET /state: {"totals": ..., "faults": ...}
/// - GET /requests: the last requests, oldest first
void addControlRoutes(Router &router, FaultBoard &faults, const RequestLog &log);

} // namespace sandbox

#pragma once

#include "sandbox/server/ServerContext.h"

namespace sandbox {

/// The routes of the control port that every server has, under the loopback names only, so that a web page in a browser
/// cannot reach them under a name of its own:
///
/// - POST /faults: one fault (FaultBoard::add) or an array of them, all or none; 400 with the reason otherwise
/// - GET /faults, DELETE /faults
/// - GET /state: {"totals": ..., "faults": ...}
/// - GET /requests: the last requests, oldest first
/// - GET /problems: what was wrong with messages on open sockets, the last ones, oldest first
void addControlRoutes(ServerContext &context);

} // namespace sandbox

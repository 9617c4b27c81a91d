#pragma once

#include <memory>

#include "reachability/NotificationCenter.h"
#include "reachability/Reachability.h"

namespace vynlex {

/// The reachability that a "reachabilityChanged" is about. An object of another type is a programming error and ends
/// the process.
[[nodiscard]] std::shared_ptr<Reachability> reachabilityOf(const Notification &note);

} // namespace vynlex

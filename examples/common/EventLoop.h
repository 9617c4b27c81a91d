#pragma once

#include <chrono>
#include <functional>

namespace examples {

/// Runs the event loop until `condition` holds, or `limit` has passed; says which. Main thread.
bool waitUntil(const std::function<bool()> &condition, std::chrono::milliseconds limit);

/// Runs the event loop that long.
void letPass(std::chrono::milliseconds time);

} // namespace examples

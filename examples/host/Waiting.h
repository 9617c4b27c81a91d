#pragma once

#include <chrono>

#include "EventLoop.h"

namespace host {

/// A service that has not answered by then does not answer.
inline constexpr std::chrono::seconds serviceLimit{30};

using examples::letPass;
using examples::waitUntil;

} // namespace host

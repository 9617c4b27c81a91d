#pragma once

#include <functional>

namespace vynlex {

/// A piece of work for a queue. Runs at most once.
using Task = std::function<void()>;

} // namespace vynlex

#pragma once

#include <string>

#include "sandbox/backend/WireTime.h"

namespace sandbox {

/// An id of the backend's records: 24 hexadecimal digits, of which the first eight are the time in seconds.
[[nodiscard]] std::string newObjectId(Instant made);

} // namespace sandbox

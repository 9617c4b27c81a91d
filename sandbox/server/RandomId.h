#pragma once

#include <string>

namespace sandbox {

/// 32 random hexadecimal digits, lower case: the services' ids for requests, turns and streams.
[[nodiscard]] std::string randomHexId();

/// The same as a version 4 GUID: "8-4-4-4-12" digits.
[[nodiscard]] std::string randomGuid();

} // namespace sandbox

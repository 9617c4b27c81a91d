#pragma once

#include <string>
#include <string_view>

namespace sandbox {

/// By what numbers are the same: the last ten digits, whatever else the text holds ("+91 98250-12345" is "9825012345").
/// All digits when there are fewer; empty when there are none, which is the same as no number.
[[nodiscard]] std::string phoneKey(std::string_view number);

} // namespace sandbox

#pragma once

#include <chrono>
#include <optional>
#include <string>

namespace sandbox {

/// A moment as the backend keeps it: milliseconds, UTC.
using Instant = std::chrono::sys_time<std::chrono::milliseconds>;

[[nodiscard]] Instant now();

/// "2026-01-31T09:15:00.000+0000"
[[nodiscard]] std::string toWireTime(Instant instant);
/// Nothing when the text is not exactly of that form.
[[nodiscard]] std::optional<Instant> fromWireTime(const std::string &text);

} // namespace sandbox

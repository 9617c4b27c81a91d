#pragma once

#include "platform/dispatch/Clock.h"

namespace vynlex {

/// The shipped clock: the Qt event loop's precise timers.
class SystemClock final : public Clock {
public:
    [[nodiscard]] std::chrono::steady_clock::time_point now() const override;
    [[nodiscard]] std::unique_ptr<Timer> after(std::chrono::milliseconds delay, Task task) override;
    [[nodiscard]] std::unique_ptr<Timer> every(std::chrono::milliseconds interval, Task task) override;
};

} // namespace vynlex

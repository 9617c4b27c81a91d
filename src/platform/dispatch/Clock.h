#pragma once

#include <chrono>
#include <memory>

#include "platform/dispatch/Task.h"

namespace vynlex {

/// A running timer. Destroying it stops it; its task does not run afterwards.
class Timer {
public:
    virtual ~Timer() = default;
};

/// Port: the time of day of the device's main thread, and timers on its run loop.
///
/// All functions and all timer tasks are on the main thread. A timer is precise (it does not fire early, and late only
/// by what else the main thread does); its task may destroy the timer, or start others. `every` fires first after one
/// interval. The intervals of `every` are counted from its start, so that they do not drift.
class Clock {
public:
    virtual ~Clock() = default;

    /// Monotonic; unrelated to the time of day.
    [[nodiscard]] virtual std::chrono::steady_clock::time_point now() const = 0;

    [[nodiscard]] virtual std::unique_ptr<Timer> after(std::chrono::milliseconds delay, Task task) = 0;
    [[nodiscard]] virtual std::unique_ptr<Timer> every(std::chrono::milliseconds interval, Task task) = 0;
};

} // namespace vynlex

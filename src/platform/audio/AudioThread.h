#pragma once

#include <chrono>

#include "platform/dispatch/Task.h"

namespace vynlex {

/// The one thread on which QtMultimedia lives: its objects call back on the thread that made them. Begins with the
/// first use and ends with the application object; tasks that come later are dropped.
class AudioThread {
public:
    /// In order, never before the call returns. Any thread.
    static void async(Task task);

    /// Runs `task` and waits for it; at once when called on the audio thread. False when it has not run within
    /// `limit`, because the sound server hangs: it may still run later, so it must own what it uses.
    static bool sync(Task task, std::chrono::milliseconds limit = std::chrono::seconds(5));
};

} // namespace vynlex

#pragma once

#include "platform/dispatch/Task.h"

namespace vynlex {

/// The queue of the application's main thread.
class MainQueue {
public:
    /// Runs `task` on the main thread on a later turn of its event loop; never before the call returns, in the order of
    /// the calls. Any thread. Tasks posted before the application object exists run once it does.
    static void async(Task task);

    [[nodiscard]] static bool isCurrent();
};

} // namespace vynlex

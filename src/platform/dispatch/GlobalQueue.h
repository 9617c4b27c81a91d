#pragma once

#include "platform/dispatch/Task.h"

namespace vynlex {

/// Background work that may block: starting recognition, speaking, reading the address book.
class GlobalQueue {
public:
    /// Runs `task` on some thread of the kit's own pool, at user-initiated priority. Any thread. The pool is wide
    /// enough
    /// (`maximumThreads`) that a few blocked tasks do not hold up the next; order is not kept.
    static void async(Task task);

    static constexpr int maximumThreads = 16;
};

} // namespace vynlex

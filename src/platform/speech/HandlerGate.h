#pragma once

#include <mutex>
#include <utility>

namespace vynlex {

/// Runs an object's handlers one at a time and lets its destructor put an end to them. Shared by the object and by
/// whatever calls its handlers, since either may be the last to go.
class HandlerGate {
public:
    /// Runs `handler` unless the gate is closed. False when it did not run.
    template<typename Handler> bool run(Handler &&handler)
    {
        const std::lock_guard lock(m_mutex);
        if (m_closed)
            return false;
        std::forward<Handler>(handler)();
        return true;
    }

    /// Waits for a handler that runs on another thread; none begins afterwards. From within a handler it does not wait.
    void close()
    {
        const std::lock_guard lock(m_mutex);
        m_closed = true;
    }

private:
    std::recursive_mutex m_mutex; // Recursive: a handler may destroy the object whose handler it is.
    bool m_closed = false;
};

} // namespace vynlex

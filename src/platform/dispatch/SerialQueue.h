#pragma once

#include <QString>

#include <memory>

#include "platform/dispatch/Task.h"

namespace vynlex {

/// Runs tasks one after the other, in order, on a thread of its own.
///
/// Destroying the queue drops what has not begun and waits for the task that is running.
class SerialQueue {
public:
    explicit SerialQueue(const QString &label);
    ~SerialQueue();

    /// Any thread.
    void async(Task task);

private:
    struct State;
    std::unique_ptr<State> m_state;
};

} // namespace vynlex

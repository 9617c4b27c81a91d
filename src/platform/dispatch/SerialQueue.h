#pragma once

#include <QString>

#include <memory>

#include "platform/dispatch/Task.h"

namespace vynlex {

/// Runs tasks one after the other, in order, on threads of the global queue.
///
/// Destroying the queue drops what has not begun and does not wait for the task that is running, so a task may own the
/// object that owns the queue; it must own whatever else it uses.
class SerialQueue {
public:
    /// `label` names the running thread in a debugger, by its first 15 characters.
    explicit SerialQueue(const QString &label);
    ~SerialQueue();
    SerialQueue(const SerialQueue &) = delete;
    SerialQueue &operator=(const SerialQueue &) = delete;

    /// Any thread.
    void async(Task task);

private:
    struct Lane;
    std::shared_ptr<Lane> m_lane;
};

} // namespace vynlex

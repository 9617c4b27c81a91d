#pragma once

#include <QString>

#include <optional>

namespace vynlex {

/// Port: the platform's per-user defaults store. Main thread and global queues; every call sees the latest value.
class UserDefaults {
public:
    virtual ~UserDefaults() = default;

    /// The text under `key`, or nothing when the key is absent or holds something else.
    [[nodiscard]] virtual std::optional<QString> string(const QString &key) const = 0;
    /// Survives the process even if it is killed right afterwards.
    virtual void setString(const QString &key, const QString &value) = 0;
};

} // namespace vynlex

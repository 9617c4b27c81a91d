#pragma once

#include <QSettings>

#include <memory>
#include <mutex>

#include "platform/storage/UserDefaults.h"

namespace vynlex {

/// User defaults in the host's own QSettings: under its organisation and application names, in the platform's format
/// (on Apple systems the user defaults database). Every write is on the disk when `setString` returns (about 11 ms).
/// A store that cannot be written gives a console line; values then last as long as this object. Any thread.
class QSettingsUserDefaults final : public UserDefaults {
public:
    /// The names that the application has set by the time of this call.
    QSettingsUserDefaults();
    /// An INI file, made by the first write.
    explicit QSettingsUserDefaults(const QString &filePath);

    [[nodiscard]] std::optional<QString> string(const QString &key) const override;
    void setString(const QString &key, const QString &value) override;

private:
    mutable std::mutex m_mutex;
    std::unique_ptr<QSettings> m_settings;
};

} // namespace vynlex

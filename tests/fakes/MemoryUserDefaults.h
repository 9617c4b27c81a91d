#pragma once

#include <QMap>

#include "platform/dispatch/Guarded.h"
#include "platform/storage/UserDefaults.h"

namespace vynlex {

/// User defaults that live as long as the object. Any thread.
class MemoryUserDefaults final : public UserDefaults {
public:
    [[nodiscard]] std::optional<QString> string(const QString &key) const override
    {
        return m_values.with([&](const QMap<QString, QString> &values) -> std::optional<QString> {
            const auto found = values.find(key);
            return found == values.end() ? std::nullopt : std::optional(*found);
        });
    }

    void setString(const QString &key, const QString &value) override
    {
        m_values.with([&](QMap<QString, QString> &values) { values.insert(key, value); });
    }

    [[nodiscard]] QMap<QString, QString> all() const { return m_values.copy(); }

private:
    mutable Guarded<QMap<QString, QString>> m_values;
};

} // namespace vynlex

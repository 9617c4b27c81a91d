#include "platform/storage/QSettingsUserDefaults.h"

#include <QMetaType>
#include <QVariant>

#include "platform/dispatch/Console.h"

namespace vynlex {

QSettingsUserDefaults::QSettingsUserDefaults()
    : m_settings(std::make_unique<QSettings>())
{
}

QSettingsUserDefaults::QSettingsUserDefaults(const QString &filePath)
    : m_settings(std::make_unique<QSettings>(filePath, QSettings::IniFormat))
{
}

std::optional<QString> QSettingsUserDefaults::string(const QString &key) const
{
    const std::lock_guard lock(m_mutex);
    const QVariant value = m_settings->value(key);
    if (value.typeId() != QMetaType::QString)
        return std::nullopt;
    return value.toString();
}

void QSettingsUserDefaults::setString(const QString &key, const QString &value)
{
    const std::lock_guard lock(m_mutex);
    m_settings->setValue(key, value);
    m_settings->sync();
    if (m_settings->status() != QSettings::NoError)
        consoleLine(QStringLiteral("User defaults cannot be written: %1").arg(m_settings->fileName()));
}

} // namespace vynlex

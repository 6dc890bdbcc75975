#include "settings/UserDefaults.h"

#include "settings/JsonSettingsFormat.h"

#include <QLockFile>
#include <QStandardPaths>

using namespace Qt::StringLiterals;

namespace orvane {

namespace {

// The lock QSettings itself takes to write. In a folder that does not exist it fails at once.
std::unique_ptr<QLockFile> lockOf(const QString &file)
{
    auto lock = std::make_unique<QLockFile>(file + u".lock"_s);
    lock->tryLock(1000);
    return lock;
}

template <typename T>
std::optional<T> as(const QVariant &value)
{
    return value.typeId() == qMetaTypeId<T>() ? std::optional(value.value<T>()) : std::nullopt;
}

} // namespace

UserDefaults::UserDefaults(const QString &file) : UserDefaults(file, lockOf(file)) {}

UserDefaults::UserDefaults(const QString &file, std::unique_ptr<QLockFile>)
    : m_settings(file, JsonSettingsFormat::format())
{}

QString UserDefaults::standardFile()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) +
           u"/Orvane/settings.json"_s;
}

std::optional<QString> UserDefaults::string(const QString &key) const
{
    return as<QString>(value(key));
}

std::optional<bool> UserDefaults::boolean(const QString &key) const
{
    return as<bool>(value(key));
}

std::optional<QDateTime> UserDefaults::date(const QString &key) const
{
    return as<QDateTime>(value(key));
}

QVariant UserDefaults::value(const QString &key) const
{
    return m_settings.value(key);
}

bool UserDefaults::contains(const QString &key) const
{
    return m_settings.contains(key);
}

void UserDefaults::set(const QString &key, const QVariant &value)
{
    m_settings.setValue(key, value);
    m_settings.sync();
}

void UserDefaults::remove(const QString &key)
{
    m_settings.remove(key);
    m_settings.sync();
}

} // namespace orvane

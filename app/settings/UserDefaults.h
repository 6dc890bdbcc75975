#pragma once

#include <QDateTime>
#include <QSettings>
#include <QString>

#include <optional>

namespace orvane {

/// The user's stored preferences: typed values under flat keys, in one JSON file that keeps the types
/// (true and "true" differ). Every change is on disk when the call returns; what another process
/// changed meanwhile under other keys is kept. A file that cannot be read is set aside beside itself
/// as "….damaged" and the defaults start empty. Main thread.
class UserDefaults
{
public:
    /// `file` is created with its folder on the first write.
    explicit UserDefaults(const QString &file);

    /// The running user's file in the configuration folder.
    [[nodiscard]] static QString standardFile();

    /// None when the key is absent or holds a value of another type.
    [[nodiscard]] std::optional<QString> string(const QString &key) const;
    [[nodiscard]] std::optional<bool> boolean(const QString &key) const;
    [[nodiscard]] std::optional<QDateTime> date(const QString &key) const;

    /// Any type; invalid when absent.
    [[nodiscard]] QVariant value(const QString &key) const;
    [[nodiscard]] bool contains(const QString &key) const;

    void set(const QString &key, const QString &value);
    void set(const QString &key, bool value);
    void set(const QString &key, const QDateTime &value);
    void set(const QString &key, const QVariant &value);
    void remove(const QString &key);

private:
    QSettings m_settings;
};

} // namespace orvane

#pragma once

#include <QDateTime>
#include <QSettings>
#include <QString>

#include <memory>
#include <optional>

class QLockFile;

namespace orvane {

/// The user's stored preferences: typed values under flat keys, in one JSON file that keeps the types
/// (true and "true" differ). Every change is on disk when the call returns; what another process
/// changed meanwhile under other keys is kept. A file that cannot be read is set aside beside itself
/// as "….damaged" and the defaults start empty. A change that cannot be written (a full disk, no
/// permission) holds until the process ends and goes to disk with the next change that can. Main thread.
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
    /// In UTC.
    [[nodiscard]] std::optional<QDateTime> date(const QString &key) const;

    /// Any type; invalid when absent.
    [[nodiscard]] QVariant value(const QString &key) const;
    [[nodiscard]] bool contains(const QString &key) const;

    /// Takes bool, QString, numbers, QDateTime, and lists and maps of them.
    void set(const QString &key, const QVariant &value);
    void remove(const QString &key);

private:
    UserDefaults(const QString &file, std::unique_ptr<QLockFile> lockWhileReading);

    QSettings m_settings;
};

} // namespace orvane

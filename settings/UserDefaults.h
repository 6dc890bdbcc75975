#pragma once

#include "base/Scope.h"

#include <QDateTime>
#include <QObject>
#include <QString>
#include <QThreadPool>
#include <QVariantMap>

#include <QCoroTask>

#include <optional>

namespace orvane {

/// The user's stored preferences: typed values under flat keys, in one JSON file that keeps the types
/// (true and "true" differ). A change holds at once and goes to disk off the main thread, those of one moment
/// together; the destructor waits for the last. What another process changed under other keys is kept.
/// A file that cannot be understood counts as empty and is set aside beside itself as "….damaged" by the
/// first change. A change that cannot be written (a full disk, no permission) holds until the process ends,
/// is reported by error(), and goes to disk with the next change that can. Main thread.
class UserDefaults : public QObject
{
    Q_OBJECT
    Q_PROPERTY(QString error READ error NOTIFY errorChanged)

public:
    /// `file` is created with its folder on the first write.
    explicit UserDefaults(const QString &file);
    ~UserDefaults() override;

    /// The running user's file in the configuration folder.
    [[nodiscard]] static QString standardFile();

    /// None when the key is absent or holds a value of another type.
    [[nodiscard]] std::optional<QString> string(const QString &key) const;
    [[nodiscard]] std::optional<bool> boolean(const QString &key) const;
    /// In UTC.
    [[nodiscard]] std::optional<QDateTime> date(const QString &key) const;

    /// Any type; invalid when absent.
    [[nodiscard]] QVariant value(const QString &key) const { return m_values.value(key); }
    [[nodiscard]] bool contains(const QString &key) const { return m_values.contains(key); }

    /// Takes bool, QString, numbers, QDateTime, and lists and maps of them.
    void set(const QString &key, const QVariant &value);
    void remove(const QString &key);

    /// Why the last changes are not on disk, one sentence; empty when they are or will be.
    [[nodiscard]] QString error() const { return m_error; }

    /// Writes now what waits to be written. Waits for the disk.
    void flush();

Q_SIGNALS:
    void errorChanged();

private:
    void change(const QString &key, const QVariant &value);
    [[nodiscard]] QCoro::Task<> save();
    void settle(const QVariantMap &stored, const QString &problem);
    void setError(const QString &text);

    const QString m_file;
    QVariantMap m_values;
    /// Not on disk yet; an invalid value is a removed one.
    QVariantMap m_changes;
    /// Those that are being written.
    QVariantMap m_saving;
    bool m_isSaving = false;
    QString m_error;
    QThreadPool m_thread;
    Scope m_scope;
};

} // namespace orvane

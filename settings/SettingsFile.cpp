#include "settings/SettingsFile.h"

#include "base/files/FileError.h"
#include "base/files/FileLock.h"
#include "base/files/FileReplacement.h"

#include <QDateTime>
#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QThread>

#include <chrono>
#include <optional>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace orvane::SettingsFile {

namespace {

// Preferences take a few kilobytes; what is larger is not ours to read into memory.
constexpr qint64 maxSize = 4 * 1024 * 1024;
/// Longer than any other process needs to write.
constexpr auto maxWait = 1s;

const QString dateKey = u"$date"_s;

QVariant fromJson(const QJsonValue &value)
{
    if (value.isArray()) {
        QVariantList list;
        for (const QJsonValue &item : value.toArray())
            list.append(fromJson(item));
        return list;
    }
    if (!value.isObject())
        return value.toVariant();

    const QJsonObject object = value.toObject();
    if (object.size() == 1 && object.contains(dateKey)) {
        const QDateTime date = QDateTime::fromString(object[dateKey].toString(), Qt::ISODateWithMs);
        if (date.isValid())
            return date.toUTC();
    }
    QVariantMap map;
    for (auto member = object.begin(); member != object.end(); ++member)
        map.insert(member.key(), fromJson(member.value()));
    return map;
}

QJsonValue toJson(const QVariant &value)
{
    switch (value.typeId()) {
    case QMetaType::QDateTime:
        return QJsonObject{{dateKey, value.toDateTime().toUTC().toString(Qt::ISODateWithMs)}};
    case QMetaType::QVariantList:
    case QMetaType::QStringList: {
        QJsonArray list;
        for (const QVariant &item : value.toList())
            list.append(toJson(item));
        return list;
    }
    case QMetaType::QVariantMap: {
        QJsonObject object;
        const QVariantMap map = value.toMap();
        for (auto member = map.begin(); member != map.end(); ++member)
            object.insert(member.key(), toJson(member.value()));
        return object;
    }
    default:
        return QJsonValue::fromVariant(value);
    }
}

/// None when the file is damaged; empty when there is none. Throws FileError when it cannot be read.
std::optional<QVariantMap> contentOf(const QString &path)
{
    QFile file(path);
    if (!file.exists())
        return QVariantMap();
    if (!file.open(QFile::ReadOnly))
        throw FileError::notRead(file);
    const QJsonDocument document =
        file.size() > maxSize ? QJsonDocument() : QJsonDocument::fromJson(file.readAll());
    return document.isObject() ? std::optional(fromJson(document.object()).toMap()) : std::nullopt;
}

void setAside(const QString &file)
{
    const QString damaged = file + u".damaged"_s;
    bool isAside = QFile::rename(file, damaged); // fails when the target exists
    for (int number = 2; !isAside && number < 1000; ++number)
        isAside = QFile::rename(file, u"%1-%2"_s.arg(damaged).arg(number));
}

/// None when another process keeps it, or in a folder where there can be none: the file itself is replaced
/// as a whole in any case.
std::optional<FileLock> lockOf(const QString &path)
{
    try {
        const QDeadlineTimer deadline(maxWait);
        std::optional<FileLock> lock = FileLock::tryLock(path + u".lock"_s);
        while (!lock && !deadline.hasExpired()) {
            QThread::msleep(5);
            lock = FileLock::tryLock(path + u".lock"_s);
        }
        return lock;
    } catch (const FileError &) {
        return std::nullopt;
    }
}

} // namespace

QVariantMap read(const QString &path)
{
    try {
        return contentOf(path).value_or(QVariantMap());
    } catch (const FileError &) {
        return {}; // said when a change cannot be written
    }
}

QVariantMap change(const QString &path, const QVariantMap &changes)
{
    QDir().mkpath(QFileInfo(path).path());
    const std::optional<FileLock> lock = lockOf(path);
    const std::optional<QVariantMap> present = contentOf(path);
    if (!present)
        setAside(path);
    QVariantMap values = present.value_or(QVariantMap());
    for (auto one = changes.begin(); one != changes.end(); ++one) {
        if (one.value().isValid())
            values.insert(one.key(), one.value());
        else
            values.remove(one.key());
    }
    replaceFile(path, QJsonDocument(toJson(values).toObject()).toJson(), FileAccess::Private);
    return values;
}

} // namespace orvane::SettingsFile

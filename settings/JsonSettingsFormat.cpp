#include "settings/JsonSettingsFormat.h"

#include <QDateTime>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace orvane::JsonSettingsFormat {

namespace {

// Preferences take a few kilobytes; what is larger is not ours to read into memory.
constexpr qint64 largestFile = 4 * 1024 * 1024;

const QString &dateKey()
{
    static const QString key = u"$date"_s;
    return key;
}

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
    if (object.size() == 1 && object.contains(dateKey())) {
        const QDateTime date = QDateTime::fromString(object[dateKey()].toString(), Qt::ISODateWithMs);
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
        return QJsonObject{{dateKey(), value.toDateTime().toUTC().toString(Qt::ISODateWithMs)}};
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

void setAside(const QString &file)
{
    const QString damaged = file + u".damaged"_s;
    if (QFile::rename(file, damaged)) // fails when the target exists
        return;
    for (int number = 2; number < 1000; ++number) {
        if (QFile::rename(file, u"%1-%2"_s.arg(damaged).arg(number)))
            return;
    }
}

bool read(QIODevice &device, QSettings::SettingsMap &settings)
{
    const QJsonDocument document =
        device.size() > largestFile ? QJsonDocument() : QJsonDocument::fromJson(device.readAll());
    if (!document.isObject()) {
        if (const auto *file = qobject_cast<QFile *>(&device))
            setAside(file->fileName());
        return true; // the defaults start empty
    }
    const QJsonObject object = document.object();
    for (auto member = object.begin(); member != object.end(); ++member)
        settings.insert(member.key(), fromJson(member.value()));
    return true;
}

// QSettings takes a file for unchanged when its size and its time in milliseconds are, and would write
// over what another process stored within the same tick: no two versions get the same time.
void dateAfterEarlierVersion(QFileDevice &file)
{
    const QDateTime earlier = QFileInfo(file.fileName()).lastModified();
    const QDateTime now = QDateTime::currentDateTimeUtc();
    file.flush(); // what is written later would date the file anew
    file.setFileTime(earlier.isValid() ? std::max(now, earlier.addMSecs(1)) : now,
                     QFile::FileModificationTime);
}

bool write(QIODevice &device, const QSettings::SettingsMap &settings)
{
    auto *file = qobject_cast<QFileDevice *>(&device);
    if (!file)
        return false;
    file->setPermissions(QFile::ReadOwner |
                         QFile::WriteOwner); // some file systems have none: stored all the same
    const QByteArray text = QJsonDocument(toJson(settings).toObject()).toJson();
    if (file->write(text) != text.size())
        return false;
    dateAfterEarlierVersion(*file);
    return true;
}

} // namespace

QSettings::Format format()
{
    static const QSettings::Format registered = QSettings::registerFormat(u"json"_s, read, write);
    return registered;
}

} // namespace orvane::JsonSettingsFormat

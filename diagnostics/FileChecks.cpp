#include "diagnostics/FileChecks.h"

#include "base/files/ExistingFolder.h"
#include "base/files/FileError.h"
#include "base/localization/Localization.h"

#include <QFile>
#include <QFileInfo>
#include <QStorageInfo>
#include <QTemporaryFile>

#include <cerrno>

using namespace Qt::StringLiterals;

namespace orvane::FileChecks {

using Localization::text;
using State = CheckResult::State;

namespace {

/// No model is as small; what is left of a broken copy is.
constexpr qint64 smallestModel = 1'000'000;
/// Room for hours of meetings, and for the smallest model.
constexpr qint64 leastSpace = 500'000'000;
constexpr double bytesPerGigabyte = 1e9;

bool isWhole(const Model &model)
{
    QFile file(model.path);
    return file.open(QFile::ReadOnly) && file.size() >= smallestModel &&
           file.read(model.magic.size()) == model.magic;
}

QString shownSize(qint64 bytes)
{
    return u"%1 %2"_s.arg(double(bytes) / bytesPerGigabyte, 0, 'f', 1).arg(text(u"ГБ"));
}

/// Why no file can be made there, as an errno; 0 when one can.
int refusal(const QString &folder)
{
    if (!QFileInfo(folder).isDir())
        return ENOTDIR;
    errno = 0;
    QTemporaryFile file(folder + u"/.check-XXXXXX"_s);
    return file.open() ? 0 : errno != 0 ? errno : EACCES;
}

QString faultOf(const Folder &folder)
{
    const QString path = existingFolder(folder.path);
    switch (const int error = refusal(path)) {
    case 0:
        break;
    case ENOTDIR:
        return text(u"На месте папки лежит файл %1: переименуйте или удалите его.").arg(path);
    case EACCES:
    case EPERM:
        return text(u"В папку нельзя писать: выполните chmod u+rwx \"%1\".").arg(path);
    default:
        return text(u"В папку %1 нельзя писать (%2): проверьте диск.").arg(path, FileError::reason(error));
    }
    constexpr auto others = QFile::ReadGroup | QFile::WriteGroup | QFile::ExeGroup | QFile::ReadOther |
                            QFile::WriteOther | QFile::ExeOther;
    const bool isOpen = path == folder.path && (QFileInfo(path).permissions() & others) != 0;
    return folder.isPrivate && isOpen
               ? text(u"Папку видят другие пользователи: выполните chmod 700 \"%1\".").arg(path)
               : QString();
}

} // namespace

CheckResult models(const QList<Model> &models)
{
    if (models.isEmpty())
        return {.text = text(u"Нет скачанных моделей")};
    QStringList broken;
    qint64 size = 0;
    for (const Model &model : models) {
        size += QFileInfo(model.path).size();
        if (!isWhole(model))
            broken.append(model.name);
    }
    if (broken.isEmpty())
        return {.state = State::Good, .text = text(u"Файлы моделей в порядке, %1.").arg(shownSize(size))};
    return {.state = State::Bad,
            .text =
                text(u"Файл повреждён: %1. Удалите модель и скачайте её заново.").arg(broken.join(u", "_s))};
}

CheckResult disk(const QString &folder)
{
    const qint64 available = QStorageInfo(existingFolder(folder)).bytesAvailable();
    if (available < 0)
        return {.text = text(u"Свободное место неизвестно.")};
    if (available < leastSpace) {
        return {.state = State::Bad,
                .text = text(u"Осталось %1: освободите место, иначе записи и модели не поместятся.")
                            .arg(shownSize(available))};
    }
    return {.state = State::Good, .text = text(u"Свободно %1.").arg(shownSize(available))};
}

CheckResult folders(const QList<Folder> &folders)
{
    for (const Folder &folder : folders) {
        if (const QString fault = faultOf(folder); !fault.isEmpty())
            return {.state = State::Bad, .text = fault};
    }
    return {.state = State::Good, .text = text(u"Доступны для записи: %1").arg(folders.constFirst().path)};
}

} // namespace orvane::FileChecks

#include "base/files/FileError.h"

#include "base/localization/Localization.h"

#include <QFileDevice>
#include <QFileInfo>

#include <cerrno>

using namespace Qt::StringLiterals;

namespace orvane {

namespace {

QString sentence(Localization::Text what, const QString &path, int error)
{
    return u"%1 «%2»: %3"_s.arg(what.toString(), QFileInfo(path).fileName(), FileError::reason(error));
}

} // namespace

FileError FileError::notRead(const QString &path, int error)
{
    return {sentence(u"Не удалось прочитать файл", path, error), error};
}

FileError FileError::notWritten(const QString &path, int error)
{
    return {sentence(u"Не удалось записать файл", path, error), error};
}

FileError FileError::notRead(const QFileDevice &file)
{
    return notRead(file.fileName(), errno);
}

FileError FileError::notWritten(const QFileDevice &file)
{
    return notWritten(file.fileName(), errno);
}

QString FileError::reason(int error)
{
    switch (error) {
    case ENOENT:
    case ENOTDIR:
        return Localization::text(u"файл не найден");
    case EACCES:
    case EPERM:
        return Localization::text(u"нет доступа");
    case ENOSPC:
    case EDQUOT:
        return Localization::text(u"на диске нет места");
    case EROFS:
        return Localization::text(u"диск доступен только для чтения");
    case EISDIR:
        return Localization::text(u"это папка");
    case ENAMETOOLONG:
        return Localization::text(u"слишком длинное имя");
    case EMFILE:
    case ENFILE:
        return Localization::text(u"открыто слишком много файлов");
    default:
        return Localization::text(u"ошибка файловой системы");
    }
}

} // namespace orvane

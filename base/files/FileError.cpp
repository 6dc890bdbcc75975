#include "base/files/FileError.h"

#include "base/localization/Localization.h"

#include <QFileDevice>
#include <QFileInfo>

using namespace Qt::StringLiterals;

namespace orvane {

namespace {

QString sentence(const QString &what, const QFileDevice &file)
{
    return u"%1 «%2»: %3"_s.arg(what, QFileInfo(file.fileName()).fileName(), file.errorString());
}

} // namespace

FileError FileError::notRead(const QFileDevice &file)
{
    return FileError(sentence(Localization::text(u"Не удалось прочитать файл"), file));
}

FileError FileError::notWritten(const QFileDevice &file)
{
    return FileError(sentence(Localization::text(u"Не удалось записать файл"), file));
}

} // namespace orvane

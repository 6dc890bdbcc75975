#include "base/files/PrivateFile.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <sys/stat.h>

namespace orvane {

void makePrivate(const QByteArray &path)
{
    struct stat status;
    if (stat(path.constData(), &status) != 0)
        return;
    const mode_t wanted = S_ISDIR(status.st_mode) ? S_IRWXU : S_IRUSR | S_IWUSR;
    if ((status.st_mode & ALLPERMS) != wanted)
        (void)chmod(path.constData(), wanted);
}

void makePrivateFolder(const QString &path)
{
    constexpr auto ownerAlone = privateFile | QFileDevice::ExeOwner;
    QDir().mkpath(QFileInfo(path).path());
    QDir().mkdir(path, ownerAlone);
    makePrivate(QFile::encodeName(path));
}

} // namespace orvane

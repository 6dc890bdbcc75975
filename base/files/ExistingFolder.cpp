#include "base/files/ExistingFolder.h"

#include <QDir>
#include <QFileInfo>

namespace orvane {

QString existingFolder(const QString &path)
{
    QString existing = path;
    while (!QFileInfo::exists(existing) && !QDir(existing).isRoot())
        existing = QFileInfo(existing).path();
    return existing;
}

} // namespace orvane

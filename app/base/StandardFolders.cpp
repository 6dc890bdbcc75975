#include "app/base/StandardFolders.h"

#include <QCoreApplication>
#include <QDir>
#include <QStandardPaths>

namespace orvane {

QString StandardFolders::orvane() const
{
    return applicationSupport + u"/Orvane";
}

QString StandardFolders::history() const
{
    return orvane() + u"/History";
}

QString StandardFolders::recordings() const
{
    return orvane() + u"/Recordings";
}

QString StandardFolders::models() const
{
    return orvane() + u"/Models";
}

QString StandardFolders::engineProcessFile() const
{
    return orvane() + u"/server-pids.txt";
}

StandardFolders StandardFolders::ofUser()
{
    const QString programFolder = QCoreApplication::applicationDirPath();
    return {.applicationSupport = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation),
            .resources = QDir::cleanPath(programFolder + u"/../lib/orvane"),
            .temporary = QDir::tempPath()};
}

} // namespace orvane

#include "base/StandardFolders.h"

#include <QCoreApplication>
#include <QDir>
#include <QStandardPaths>

using namespace Qt::StringLiterals;

namespace orvane {

QString StandardFolders::orvane() const
{
    return applicationSupport + u"/Orvane"_s;
}

QString StandardFolders::history() const
{
    return orvane() + u"/History"_s;
}

QString StandardFolders::recordings() const
{
    return orvane() + u"/Recordings"_s;
}

QString StandardFolders::models() const
{
    return orvane() + u"/Models"_s;
}

QString StandardFolders::correctionModels() const
{
    return orvane() + u"/CorrectionModels"_s;
}

QString StandardFolders::engineProcessFile() const
{
    return orvane() + u"/server-pids.txt"_s;
}

QString StandardFolders::historyIndex() const
{
    return caches.isEmpty() ? QString() : caches + u"/orvane/history.sqlite"_s;
}

StandardFolders StandardFolders::ofUser()
{
    const QString programFolder = QCoreApplication::applicationDirPath();
    return {.applicationSupport = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation),
            .resources = QDir::cleanPath(programFolder + u"/../lib/orvane"_s),
            .temporary = QDir::tempPath(),
            .caches = QStandardPaths::writableLocation(QStandardPaths::GenericCacheLocation)};
}

QString commandOfProgram()
{
    return QDir::cleanPath(QCoreApplication::applicationDirPath() + u"/../bin/orvane"_s);
}

} // namespace orvane

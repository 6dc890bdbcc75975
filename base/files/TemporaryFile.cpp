#include "base/files/TemporaryFile.h"

#include "base/Async.h"

#include <QFile>
#include <QUuid>

namespace orvane {

TemporaryFile::TemporaryFile(const QString &folder, const QString &prefix, const QString &suffix)
    : m_path(folder + u'/' + prefix + QUuid::createUuid().toString(QUuid::WithoutBraces).toUpper() + suffix)
{}

TemporaryFile::~TemporaryFile()
{
    startOffMainThread([path = m_path] { QFile::remove(path); });
}

} // namespace orvane

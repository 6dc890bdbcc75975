#include "recognition/TemporaryFile.h"

#include <QFile>
#include <QThreadPool>
#include <QUuid>

namespace orvane {

TemporaryFile::TemporaryFile(const QString &folder, const QString &prefix, const QString &suffix)
    : m_path(folder + u'/' + prefix + QUuid::createUuid().toString(QUuid::WithoutBraces).toUpper() + suffix)
{}

TemporaryFile::~TemporaryFile()
{
    QThreadPool::globalInstance()->start([path = m_path] { QFile::remove(path); });
}

} // namespace orvane

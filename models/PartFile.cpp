#include "models/PartFile.h"

#include "base/files/FileControl.h"
#include "models/DownloadError.h"

#include <QDir>
#include <QFileInfo>

#include <cerrno>
#include <cstdio>
#include <filesystem>

using namespace Qt::StringLiterals;

namespace orvane {

PartFile::PartFile(const QString &path) : m_file(path)
{
    QDir().mkpath(QFileInfo(path).path());
    for (;;) {
        if (!m_file.open(QFile::ReadWrite | QFile::Unbuffered))
            fail();
        const FileControl::Locked locked = FileControl::tryLock(m_file.handle());
        if (locked == FileControl::Locked::Failed)
            fail();
        if (locked == FileControl::Locked::ByAnother)
            throw DownloadError::alreadyRunning();
        if (FileControl::isOpenAs(m_file.handle(), path))
            return;
        // Whoever had the lock until now has moved or removed the file meanwhile.
        m_file.close();
    }
}

QString PartFile::pathFor(const QString &destination)
{
    return destination + u".part"_s;
}

QString PartFile::metaPathFor(const QString &destination)
{
    return pathFor(destination) + u".meta"_s;
}

QString PartFile::checkpointPathFor(const QString &destination)
{
    return pathFor(destination) + u".synced"_s;
}

void PartFile::removeRecords(const QString &destination)
{
    QFile::remove(metaPathFor(destination));
    QFile::remove(checkpointPathFor(destination));
    // What a process was writing when it was killed.
    const QFileInfo part(pathFor(destination));
    const QStringList drafts = {part.fileName() + u".*.tmp"_s};
    for (const QFileInfo &draft : part.dir().entryInfoList(drafts, QDir::Files))
        QFile::remove(draft.filePath());
}

void PartFile::discard(const QString &destination)
{
    if (!QFile::exists(pathFor(destination))) {
        removeRecords(destination);
        return;
    }
    try {
        PartFile part(pathFor(destination));
        removeRecords(destination);
        part.remove();
    } catch (const DownloadError &) {
        // Another's now.
    }
}

qint64 PartFile::allocated() const
{
    return FileControl::allocated(m_file.handle());
}

bool PartFile::beginsWith(const QByteArray &bytes)
{
    return m_file.seek(0) && m_file.read(bytes.size()) == bytes;
}

void PartFile::clear()
{
    if (!m_file.resize(0))
        fail();
}

void PartFile::write(qint64 offset, std::span<const char> bytes)
{
    switch (FileControl::write(m_file.handle(), offset, bytes)) {
    case FileControl::Written::All:
        return;
    case FileControl::Written::DiskFull:
        throw DownloadError::diskFull();
    case FileControl::Written::Failed:
        fail();
    }
}

void PartFile::startFlush(qint64 offset, qint64 length)
{
    FileControl::startFlush(m_file.handle(), offset, length);
}

bool PartFile::flush()
{
    return FileControl::flush(m_file.handle());
}

void PartFile::moveTo(const QString &destination)
{
    if (std::rename(QFile::encodeName(m_file.fileName()).constData(),
                    QFile::encodeName(destination).constData()) != 0)
        fail();
}

void PartFile::remove()
{
    // Removed while it is locked: closed first, it might be another's by then.
    std::error_code failure;
    std::filesystem::remove(QFile::encodeName(m_file.fileName()).constData(), failure);
}

void PartFile::fail() const
{
    const int error = errno;
    throw DownloadError::notWritable(QFileInfo(m_file.fileName()).path(), error);
}

} // namespace orvane

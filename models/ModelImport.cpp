#include "models/ModelImport.h"

#include "base/files/FileError.h"
#include "models/DownloadError.h"
#include "models/PartFile.h"
#include "models/TransferRate.h"

#include <QFileInfo>
#include <QScopeGuard>
#include <QStorageInfo>

#include <cerrno>
#include <vector>

namespace orvane::ModelImport {

namespace {

/// Magic and dimensions.
constexpr qint64 beginningSize = 64;
constexpr size_t blockSize = 4 * 1024 * 1024;

void open(QFile &file)
{
    const QFileInfo info(file);
    if (info.exists() && !info.isFile()) // a pipe would keep us waiting
        throw FileError::notRead(file.fileName(), EISDIR);
    if (!file.open(QFile::ReadOnly | QFile::Unbuffered))
        throw FileError::notRead(file);
}

void requireSpace(const QString &folder, qint64 needed)
{
    const qint64 available = QStorageInfo(folder).bytesAvailable();
    if (available > 0 && available < needed)
        throw DownloadError::notEnoughSpace(needed, available);
}

} // namespace

QByteArray beginningOf(const QString &path)
{
    QFile file(path);
    open(file);
    return file.read(beginningSize);
}

void copy(const QString &from, const QString &to, const DownloadState::Report &report,
          const std::stop_token &stop)
{
    QFile source(from);
    open(source);
    const qint64 total = source.size();
    PartFile part(PartFile::pathFor(to));
    auto remove = qScopeGuard([&part] { part.remove(); });
    PartFile::removeRecords(to);
    part.clear();
    requireSpace(QFileInfo(to).path(), total);

    TransferRate rate(0);
    std::vector<char> block(blockSize);
    for (qint64 done = 0;;) {
        throwIfCancelled(stop);
        report({.receivedBytes = done,
                .totalBytes = total,
                .bytesPerSecond = rate.bytesPerSecond(),
                .remainingMs = rate.remainingMs(total - done)});
        const qint64 count = source.read(block.data(), std::ssize(block));
        if (count < 0)
            throw FileError::notRead(source);
        if (count == 0)
            break;
        part.write(done, std::span(block).first(size_t(count)));
        done += count;
        rate.update(done);
    }
    if (!part.flush())
        throw DownloadError::notWritable(QFileInfo(to).path(), errno);
    part.moveTo(to);
    remove.dismiss();
}

} // namespace orvane::ModelImport

#include "history/HistoryFolder.h"

#include "base/files/FileError.h"
#include "base/files/FileReplacement.h"
#include "base/files/PrivateFile.h"
#include "base/localization/Localization.h"

#include <QFile>
#include <QFileInfo>

#include <cerrno>
#include <filesystem>
#include <system_error>

#include <unistd.h>

namespace fs = std::filesystem;

namespace orvane {

namespace {

void tightenFolder(const QString &folder)
{
    const fs::path path = QFile::encodeName(folder).toStdString();
    std::error_code failure;
    if (!fs::exists(path, failure))
        return;
    makePrivate(QByteArray::fromStdString(path.string()));
    fs::directory_iterator entry(path, failure);
    for (; !failure && entry != fs::directory_iterator(); entry.increment(failure))
        makePrivate(QByteArray::fromStdString(entry->path().string()));
}

} // namespace

HistoryFolder::RecordFile HistoryFolder::Reader::read(const QByteArray &fileName)
{
    const std::optional<FileStamp> stamp = m_folder.stampOf(fileName);
    if (!stamp || stamp->size > maxFileSize)
        return {.stamp = stamp, .record = {}};
    RecordFile file{.stamp = readRegularFile(m_folder.path(fileName), m_contents), .record = {}};
    if (file.stamp)
        file.record = m_reader.read(m_contents);
    return file;
}

HistoryFolder::HistoryFolder(const StandardFolders &folders)
    : m_history(folders.history()),
      m_recordings(folders.recordings())
{}

void HistoryFolder::prepare() const
{
    makePrivateFolder(m_history);
    tightenFolder(m_history);
    tightenFolder(m_recordings);
}

std::optional<std::vector<QByteArray>> HistoryFolder::fileNames() const
{
    std::error_code failure;
    fs::directory_iterator entry(QFile::encodeName(m_history).toStdString(), failure);
    std::vector<QByteArray> names;
    for (; !failure && entry != fs::directory_iterator(); entry.increment(failure)) {
        if (entry->path().extension() == ".json")
            names.push_back(QByteArray::fromStdString(entry->path().filename().string()));
    }
    if (failure)
        return std::nullopt;
    return names;
}

std::optional<FileStamp> HistoryFolder::stampOf(const QByteArray &fileName) const
{
    return FileStamp::of(path(fileName));
}

std::optional<FileLock> HistoryFolder::lock() const
{
    return FileLock::ofFolder(m_history);
}

void HistoryFolder::save(const TranscriptRecord &record) const
{
    if (!QFileInfo::exists(m_history))
        prepare();
    try {
        replaceFile(QFile::decodeName(path(recordFileName(record.id))), record.json(), FileAccess::Private);
    } catch (const FileError &error) {
        throw Error(Localization::text(u"Не удалось сохранить запись: ") + error.reason());
    }
}

void HistoryFolder::remove(const QByteArray &fileName) const
{
    if (::unlink(path(fileName).constData()) != 0 && errno != ENOENT)
        throw Error(Localization::text(u"Не удалось удалить запись: ") + FileError::reason(errno));
}

QByteArray HistoryFolder::path(const QByteArray &fileName) const
{
    return QFile::encodeName(m_history) + '/' + fileName;
}

} // namespace orvane

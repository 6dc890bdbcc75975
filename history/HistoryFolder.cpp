#include "history/HistoryFolder.h"

#include "base/AllCores.h"
#include "base/localization/Localization.h"
#include "history/TranscriptRecordReader.h"

#include <QDir>
#include <QFile>
#include <QSaveFile>
#include <QSet>

#include <algorithm>
#include <atomic>
#include <filesystem>
#include <system_error>
#include <vector>

using namespace Qt::StringLiterals;

namespace orvane {

namespace {

constexpr auto privateFolder = QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner;
constexpr auto privateFile = QFileDevice::ReadOwner | QFileDevice::WriteOwner;
// Below this many files a further thread costs more than it saves.
constexpr size_t filesPerThread = 64;

struct RecordFile
{
    /// None when the file cannot be read.
    std::optional<FileStamp> stamp;
    /// None when it holds no record.
    std::optional<TranscriptRecord> record;
};

class RecordFileReader
{
public:
    [[nodiscard]] RecordFile read(const QByteArray &path)
    {
        RecordFile file{.stamp = readRegularFile(path, m_contents), .record = {}};
        if (file.stamp)
            file.record = m_reader.read(m_contents);
        return file;
    }

private:
    TranscriptRecordReader m_reader;
    QByteArray m_contents;
};

/// Names of the files that may be records; none when the folder cannot be listed.
std::optional<std::vector<QByteArray>> recordFileNames(const QString &folder)
{
    std::error_code failure;
    std::filesystem::directory_iterator entry(QFile::encodeName(folder).toStdString(), failure);
    std::vector<QByteArray> names;
    for (; !failure && entry != std::filesystem::directory_iterator(); entry.increment(failure)) {
        if (entry->path().extension() == ".json")
            names.push_back(QByteArray::fromStdString(entry->path().filename().string()));
    }
    if (failure)
        return std::nullopt;
    return names;
}

/// Takes the records out of the files.
QList<TranscriptRecord> newestFirst(std::vector<RecordFile> &files, const std::vector<QByteArray> &names)
{
    struct Entry
    {
        qint64 created;
        const QByteArray *name;
        TranscriptRecord *record;
    };
    std::vector<Entry> entries;
    entries.reserve(files.size());
    for (size_t i = 0; i < files.size(); ++i) {
        if (auto &record = files[i].record)
            entries.push_back({record->createdAt.toMSecsSinceEpoch(), &names[i], &*record});
    }
    std::ranges::sort(entries, [](const Entry &left, const Entry &right) {
        return left.created != right.created ? left.created > right.created : *left.name < *right.name;
    });

    QList<TranscriptRecord> records;
    records.reserve(static_cast<qsizetype>(entries.size()));
    for (const Entry &entry : entries)
        records.append(std::move(*entry.record));
    return records;
}

void tightenFolder(const QString &folder)
{
    const std::filesystem::path path = QFile::encodeName(folder).toStdString();
    std::error_code failure;
    if (!std::filesystem::exists(path, failure))
        return;
    makePrivate(QByteArray::fromStdString(path.string()));
    std::filesystem::directory_iterator entry(path, failure);
    for (; !failure && entry != std::filesystem::directory_iterator(); entry.increment(failure))
        makePrivate(QByteArray::fromStdString(entry->path().string()));
}

QByteArray fileNameOf(const QUuid &id)
{
    return uuidText(id).toLatin1() + ".json";
}

QString prefixOf(HistoryFolder::FolderError::Kind kind)
{
    return Localization::text(kind == HistoryFolder::FolderError::Kind::NotSaved
                                  ? Localization::Text(u"Не удалось сохранить запись: ")
                                  : Localization::Text(u"Не удалось удалить запись: "));
}

} // namespace

HistoryFolder::FolderError::FolderError(Kind kind, const QString &reason)
    : Error(prefixOf(kind) + reason),
      m_kind(kind)
{}

HistoryFolder::HistoryFolder(const StandardFolders &folders)
    : m_history(folders.history()),
      m_recordings(folders.recordings())
{}

void HistoryFolder::prepare() const
{
    QDir().mkpath(QFileInfo(m_history).path());
    QDir().mkdir(m_history, privateFolder);
    tightenPermissions();
}

void HistoryFolder::tightenPermissions() const
{
    tightenFolder(m_history);
    tightenFolder(m_recordings);
}

QList<TranscriptRecord> HistoryFolder::load()
{
    const std::vector<QByteArray> names = recordFileNames(m_history).value_or(std::vector<QByteArray>());
    std::vector<RecordFile> files(names.size());
    std::atomic<size_t> next = 0;
    runOnAllCores(files.size(), filesPerThread, [&] {
        RecordFileReader reader;
        for (size_t i = next++; i < files.size(); i = next++)
            files[i] = reader.read(path(names[i]));
    });

    m_known.clear();
    for (size_t i = 0; i < files.size(); ++i) {
        const auto &[stamp, record] = files[i];
        if (stamp)
            m_known.insert(names[i], {*stamp, record ? std::optional(record->id) : std::nullopt});
    }

    return newestFirst(files, names);
}

void HistoryFolder::save(const TranscriptRecord &record)
{
    const QByteArray name = fileNameOf(record.id);
    const QByteArray json = record.json();
    if (!QFileInfo::exists(m_history))
        prepare();

    QSaveFile file(QFile::decodeName(path(name)));
    const bool written = file.open(QIODevice::WriteOnly) && file.setPermissions(privateFile) &&
                         file.write(json) == json.size() && file.flush();
    // Taken before the file is in place: afterwards it may already be another process's.
    const std::optional<FileStamp> stamp = written ? FileStamp::of(file.handle()) : std::nullopt;
    if (!written || !file.commit())
        throw FolderError(FolderError::Kind::NotSaved, file.errorString());
    if (stamp)
        m_known.insert(name, {*stamp, record.id});
}

void HistoryFolder::remove(const QUuid &id)
{
    const QByteArray name = fileNameOf(id);
    QFile file(QFile::decodeName(path(name)));
    if (!file.remove() && file.exists())
        throw FolderError(FolderError::Kind::NotDeleted, file.errorString());
    m_known.remove(name);
}

QHash<QUuid, QList<TranscriptRecord>> HistoryFolder::rescan()
{
    const auto names = recordFileNames(m_history);
    if (!names)
        return {};

    QSet<QUuid> affected;
    const auto affect = [&affected](const std::optional<QUuid> &id) {
        if (id)
            affected.insert(*id);
    };
    RecordFileReader reader;
    QHash<QByteArray, TranscriptRecord> fresh;
    QHash<QByteArray, KnownFile> vanished = m_known;
    for (const QByteArray &name : *names) {
        const std::optional<KnownFile> known =
            vanished.contains(name) ? std::optional(vanished.take(name)) : std::nullopt;
        const std::optional<FileStamp> stamp = FileStamp::of(path(name));
        if (!stamp || (known && known->stamp == *stamp))
            continue;
        const RecordFile file = reader.read(path(name));
        if (!file.stamp)
            continue;
        KnownFile now{*file.stamp, file.record ? std::optional(file.record->id) : std::nullopt};
        if (known)
            affect(known->id);
        affect(now.id);
        m_known.insert(name, now);
        if (file.record)
            fresh.insert(name, *file.record);
    }
    for (const auto &[name, known] : vanished.asKeyValueRange()) {
        affect(known.id);
        m_known.remove(name);
    }

    QHash<QUuid, QList<TranscriptRecord>> changes;
    for (const QUuid &id : affected)
        changes.insert(id, {});
    for (const auto &[name, known] : m_known.asKeyValueRange()) {
        if (!known.id || !affected.contains(*known.id))
            continue;
        const auto read = fresh.constFind(name);
        std::optional<TranscriptRecord> record =
            read != fresh.constEnd() ? std::optional(*read) : reader.read(path(name)).record;
        if (record)
            changes[*known.id].append(std::move(*record));
    }
    return changes;
}

QByteArray HistoryFolder::path(const QByteArray &fileName) const
{
    return QFile::encodeName(m_history) + '/' + fileName;
}

} // namespace orvane

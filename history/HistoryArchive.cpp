#include "history/HistoryArchive.h"

#include "base/AllCores.h"
#include "base/Error.h"
#include "base/localization/Localization.h"

#include <algorithm>
#include <atomic>
#include <utility>

namespace orvane {

namespace {

// Below this many files a further thread costs more than it saves.
constexpr size_t filesPerThread = 64;

// So many records are in memory at once while the index is made.
constexpr size_t filesReadAtOnce = 512;

} // namespace

HistoryArchive::HistoryArchive(const StandardFolders &folders)
    : m_folder(folders),
      m_index(folders.historyIndex())
{}

bool HistoryArchive::refresh()
{
    int generation = 0;
    do { // an index that broke meanwhile begins anew
        generation = m_index.generation();
        if (!compareWithFolder())
            return false;
    } while (m_index.generation() != generation);
    m_isIndexBehind = false;
    return true;
}

bool HistoryArchive::compareWithFolder()
{
    const std::optional<std::vector<QByteArray>> names = m_folder.fileNames();
    if (!names)
        return false;
    QHash<QByteArray, FileStamp> known = m_index.files();
    std::vector<QByteArray> changed;
    m_notice.clear();
    for (const QByteArray &name : *names) {
        const std::optional<FileStamp> stamp = m_folder.stampOf(name);
        if (!stamp)
            continue;
        if (stamp->size > HistoryFolder::maxFileSize)
            m_notice =
                Localization::text(u"Файл истории слишком велик и пропущен: ") + QString::fromUtf8(name);
        if (known.take(name) != *stamp)
            changed.push_back(name);
    }
    if (!known.isEmpty())
        m_index.remove(known.keys());
    for (std::span<const QByteArray> rest = changed; !rest.empty();) {
        const size_t count = std::min(rest.size(), filesReadAtOnce);
        m_index.put(readAll(rest.first(count)));
        rest = rest.subspan(count);
    }
    return true;
}

std::vector<HistoryIndex::Entry> HistoryArchive::readAll(std::span<const QByteArray> fileNames) const
{
    std::vector<HistoryIndex::Entry> entries(fileNames.size());
    std::atomic<size_t> next = 0;
    runOnAllCores(entries.size(), filesPerThread, [&] {
        HistoryFolder::Reader reader(m_folder);
        for (size_t i = next++; i < entries.size(); i = next++) {
            const HistoryFolder::RecordFile file = reader.read(fileNames[i]);
            if (file.stamp)
                entries[i] = HistoryIndex::Entry(fileNames[i], *file.stamp, file.record);
        }
    });
    std::erase_if(entries, [](const HistoryIndex::Entry &entry) { return entry.fileName.isEmpty(); });
    return entries;
}

std::optional<HistoryArchive::Listing> HistoryArchive::list()
{
    if (!refresh())
        return std::nullopt;
    Listing listing{.records = m_index.records(), .notice = m_notice};
    for (const QUuid &id : m_unsaved.keys()) {
        listing.records.removeIf([&id](const RecordSummary &summary) { return summary.id == id; });
        const std::optional<TranscriptRecord> record = current(id);
        if (!record)
            continue;
        const auto place =
            std::ranges::find_if(std::as_const(listing.records), [&](const RecordSummary &other) {
                return other.createdAt <= record->createdAt;
            });
        listing.records.insert(place - listing.records.cbegin(), RecordSummary::of(*record));
    }
    return listing;
}

TranscriptRecord HistoryArchive::read(const QUuid &id)
{
    if (std::optional<TranscriptRecord> record = current(id))
        return *std::move(record);
    throw Error(Localization::text(u"В истории нет записи ") + uuidText(id));
}

QSet<QString> HistoryArchive::audioFileNames()
{
    refresh();
    return m_index.audioFileNames();
}

QSet<QUuid> HistoryArchive::search(const QString &text)
{
    if (m_isIndexBehind)
        refresh();
    return m_index.search(text);
}

std::optional<TranscriptRecord> HistoryArchive::stored(const QUuid &id)
{
    HistoryFolder::Reader reader(m_folder);
    const auto recordIn = [&](const QByteArray &fileName) {
        std::optional<TranscriptRecord> record = reader.read(fileName).record;
        return record && record->id == id ? record : std::nullopt;
    };
    if (std::optional<TranscriptRecord> record = recordIn(recordFileName(id)))
        return record;
    refresh();
    for (const QByteArray &fileName : m_index.filesOf(id)) {
        if (std::optional<TranscriptRecord> record = recordIn(fileName))
            return record;
    }
    return std::nullopt;
}

std::optional<TranscriptRecord> HistoryArchive::current(const QUuid &id)
{
    const Unsaved unsaved = m_unsaved.value(id);
    if (unsaved.isRemoved)
        return std::nullopt;
    std::optional<TranscriptRecord> record = unsaved.added ? unsaved.added : stored(id);
    if (record) {
        for (const RecordEdit &edit : unsaved.edits)
            edit(*record);
    }
    return record;
}

void HistoryArchive::add(const TranscriptRecord &record)
{
    m_unsaved[record.id].added = record;
    write(record.id);
}

void HistoryArchive::edit(const QUuid &id, const RecordEdit &edit)
{
    m_unsaved[id].edits.append(edit);
    write(id);
}

void HistoryArchive::remove(const QUuid &id)
{
    m_unsaved[id].isRemoved = true;
    write(id);
}

void HistoryArchive::retry(const QUuid &id)
{
    if (m_unsaved.contains(id))
        write(id);
}

void HistoryArchive::retryAll()
{
    for (const QUuid &id : m_unsaved.keys()) {
        try {
            write(id);
        } catch (const std::exception &) {
            // it was told when it failed first
        }
    }
}

// The file is read right before it is written: what another program made of it meanwhile stays.
void HistoryArchive::write(const QUuid &id)
{
    m_isIndexBehind = true;
    const std::optional<FileLock> lock = m_folder.lock();
    if (m_unsaved.value(id).isRemoved) {
        removeFiles(id);
    } else if (const std::optional<TranscriptRecord> record = current(id)) {
        m_folder.save(*record);
    } else if (m_folder.stampOf(recordFileName(id))) {
        throw Error(Localization::text(u"Не удалось сохранить запись: ") +
                    Localization::text(u"её файл повреждён"));
    }
    m_unsaved.remove(id);
}

void HistoryArchive::removeFiles(const QUuid &id)
{
    refresh();
    const QList<QByteArray> fileNames = m_index.filesOf(id);
    for (const QByteArray &fileName : fileNames)
        m_folder.remove(fileName);
    m_index.remove(fileNames);
}

} // namespace orvane

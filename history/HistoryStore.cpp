#include "history/HistoryStore.h"

#include "base/Async.h"
#include "history/MergedRecords.h"

#include <algorithm>
#include <utility>

namespace orvane {

HistoryStore::HistoryStore(const StandardFolders &folders, QObject *parent)
    : QObject(parent),
      m_directory(folders.history()),
      m_archive(folders),
      m_writes(m_archive, m_pool)
{
    m_pool.setMaxThreadCount(1);
    m_pool.setExpiryTimeout(-1);
    connect(&m_writes, &HistoryWrites::ended, this, &HistoryStore::publishError);
}

HistoryStore::~HistoryStore()
{
    m_scope.end();
    waitForDone(m_pool);
    m_archive.retryAll();
}

void HistoryStore::startLoading()
{
    if (!std::exchange(m_isLoading, true))
        spawn(load());
}

QCoro::Task<> HistoryStore::load()
{
    startOffMainThread(&m_pool, [archive = &m_archive] { archive->prepare(); });
    co_await m_scope(list());
    m_loaded = true;
    Q_EMIT recordsChanged();
    Q_EMIT loadedChanged();
    followFolder();
}

QCoro::Task<> HistoryStore::whenLoaded()
{
    startLoading();
    if (!m_loaded)
        co_await m_scope(offMainThread(&m_pool, [] {})); // the pool keeps the order
}

QCoro::Task<> HistoryStore::list()
{
    std::optional<HistoryArchive::Listing> listing;
    try {
        listing =
            co_await m_scope(offMainThread(&m_pool, [archive = &m_archive] { return archive->list(); }));
        m_notice = listing ? listing->notice : QString();
    } catch (const Gone &) {
        throw;
    } catch (const std::exception &error) {
        m_notice = descriptionOf(error);
    }
    publishError({});
    if (listing)
        takeOver(listing->records);
    if (m_isWatching)
        startPreparingSearch();
}

void HistoryStore::takeOver(const QList<RecordSummary> &now)
{
    const auto isPending = [this](const QUuid &id) { return m_writes.isPending(id); };
    const MergedRecords merged = mergedRecords(m_records, now, isPending);
    if (std::exchange(m_records, merged.records) == merged.records)
        return;
    if (m_loaded)
        Q_EMIT recordsChanged();
    for (const QUuid &id : merged.changed)
        Q_EMIT recordChanged(id);
}

QCoro::Task<TranscriptRecord> HistoryStore::record(QUuid id)
{
    return offMainThread(&m_pool, [archive = &m_archive, id] { return archive->read(id); });
}

QCoro::Task<QSet<QUuid>> HistoryStore::search(QString text)
{
    return offMainThread(&m_pool, [archive = &m_archive, text] { return archive->search(text); });
}

QCoro::Task<QSet<QString>> HistoryStore::audioFileNames()
{
    return offMainThread(&m_pool, [archive = &m_archive] { return archive->audioFileNames(); });
}

void HistoryStore::change(const QUuid &id, const RecordEdit &edit, const SummaryEdit &shown)
{
    const auto found = std::ranges::find(std::as_const(m_records), id, &RecordSummary::id);
    if (found == m_records.cend() && m_loaded)
        return;
    m_writes.start(id, [archive = &m_archive, id, edit] { archive->edit(id, edit); });
    if (found == m_records.cend())
        return;
    if (shown)
        shown(m_records[found - m_records.cbegin()]);
    Q_EMIT recordsChanged();
    Q_EMIT recordChanged(id);
}

void HistoryStore::changeLogged(const QUuid &id, const RecordEvent &event, const RecordEdit &edit,
                                const SummaryEdit &shown)
{
    const auto editAndLog = [event, edit](TranscriptRecord &record) {
        if (edit)
            edit(record);
        if (!record.events)
            record.events.emplace();
        record.events->append(event);
    };
    change(id, editAndLog, shown);
}

TranscriptRecord HistoryStore::add(TranscriptRecord record)
{
    if (!record.text.isEmpty()) {
        if (!record.events)
            record.events.emplace();
        record.events->append({.prompt = std::nullopt, .text = record.text});
    }
    m_writes.start(record.id, [archive = &m_archive, record] { archive->add(record); });
    m_records.prepend(RecordSummary::of(record));
    Q_EMIT recordsChanged();
    return record;
}

void HistoryStore::rename(const QUuid &id, const QString &title)
{
    const QString trimmed = title.trimmed();
    if (trimmed.isEmpty())
        return;
    change(
        id, [trimmed](TranscriptRecord &record) { record.title = trimmed; },
        [trimmed](RecordSummary &summary) { summary.title = trimmed; });
}

void HistoryStore::renameSpeaker(const QUuid &id, qint64 speaker, const QString &name)
{
    change(id, [speaker, shown = name.simplified()](TranscriptRecord &record) {
        if (shown.isEmpty())
            record.speakerNames.remove(speaker);
        else
            record.speakerNames.insert(speaker, shown);
    });
}

void HistoryStore::setCorrected(const QUuid &id, const QString &text)
{
    changeLogged(
        id, {.kind = RecordEvent::Kind::Correction, .prompt = std::nullopt, .text = text},
        [text](TranscriptRecord &record) { record.corrected = text; },
        [](RecordSummary &summary) { summary.isCorrected = true; });
}

void HistoryStore::setSummary(const QUuid &id, const QString &text)
{
    changeLogged(
        id, {.kind = RecordEvent::Kind::Summary, .prompt = std::nullopt, .text = text},
        [text](TranscriptRecord &record) { record.summary = text; },
        [](RecordSummary &summary) { summary.hasProtocol = true; });
}

void HistoryStore::appendEvent(const QUuid &id, RecordEvent::Kind kind, const std::optional<QString> &prompt,
                               const QString &text)
{
    changeLogged(id, {.kind = kind, .prompt = prompt, .text = text}, {});
}

void HistoryStore::updateTranscription(const QUuid &id, const QList<TranscriptRecord::Segment> &segments,
                                       const QString &text, const QString &modelID,
                                       const QString &languageCode)
{
    const auto replace = [=](TranscriptRecord &record) {
        record.segments = segments;
        record.text = text;
        record.modelID = modelID;
        record.languageCode = languageCode;
        record.speakerNames.clear();
        record.corrected.reset();
        record.summary.reset();
        if (!segments.isEmpty())
            record.durationMs = segments.last().end;
    };
    const auto show = [replace](RecordSummary &summary) {
        TranscriptRecord record;
        record.durationMs = summary.durationMs;
        replace(record);
        const RecordSummary replaced = RecordSummary::of(record);
        summary.durationMs = replaced.durationMs;
        summary.beginning = replaced.beginning;
        summary.isCorrected = summary.hasProtocol = false;
    };
    changeLogged(id, {.prompt = std::nullopt, .text = text}, replace, show);
}

void HistoryStore::remove(const QUuid &id)
{
    const bool isListed =
        m_records.removeIf([&id](const RecordSummary &record) { return record.id == id; }) > 0;
    if (!isListed && m_loaded)
        return;
    m_writes.start(id, [archive = &m_archive, id] { archive->remove(id); });
    if (isListed)
        Q_EMIT recordsChanged();
}

void HistoryStore::publishError(const QString &latest)
{
    const QString failure = latest.isEmpty() ? m_writes.anyFailure() : latest;
    const QString shown = failure.isEmpty() ? m_notice : failure;
    if (std::exchange(m_lastError, shown) != shown)
        Q_EMIT lastErrorChanged();
}

QCoro::Task<> HistoryStore::flush()
{
    return offMainThread(&m_pool, [] {}); // behind every write that was asked for so far
}

QCoro::Task<> HistoryStore::whenSaved(QUuid id)
{
    co_await m_scope(flush());
    if (const QString failure = m_writes.failure(id); !failure.isEmpty())
        throw Error(failure);
}

QCoro::Task<> HistoryStore::refresh()
{
    if (m_loaded)
        co_await m_scope(list());
    else
        co_await m_scope(whenLoaded());
}

void HistoryStore::watch()
{
    m_isWatching = true;
    startOffMainThread(&m_pool, [archive = &m_archive] { archive->prepare(); });
    followFolder();
}

void HistoryStore::followFolder()
{
    if (!m_isWatching || !m_loaded || m_folderWatch)
        return;
    m_folderWatch.emplace(m_directory);
    connect(&*m_folderWatch, &FolderWatch::changed, this, [this] { spawn(refresh()); });
    spawn(refresh()); // for what happened before
}

void HistoryStore::startPreparingSearch()
{
    if (!std::exchange(m_isPreparingSearch, true))
        spawn(prepareSearch());
}

QCoro::Task<> HistoryStore::prepareSearch()
{
    const auto prepare = [archive = &m_archive] { return archive->prepareSearch(); };
    while (co_await m_scope(offMainThread(&m_pool, prepare))) {
    }
    co_await m_scope(eraseDeleted());
    m_isPreparingSearch = false;
}

QCoro::Task<> HistoryStore::eraseDeleted()
{
    const auto erase = [archive = &m_archive] { return archive->eraseResidue(); };
    while (co_await m_scope(offMainThread(&m_pool, erase))) {
    }
}

} // namespace orvane

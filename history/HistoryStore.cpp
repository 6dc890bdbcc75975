#include "history/HistoryStore.h"

#include "base/Async.h"

#include <QFileInfo>
#include <QSignalBlocker>

#include <algorithm>
#include <chrono>
#include <utility>

namespace orvane {

namespace {

// Several files that change together are looked at once.
constexpr std::chrono::milliseconds rescanDelay(150);

void appendTo(TranscriptRecord &record, RecordEvent::Kind kind, const QString &text,
              const std::optional<QString> &prompt = std::nullopt)
{
    if (!record.events)
        record.events.emplace();
    record.events->append({.kind = kind, .prompt = prompt, .text = text});
}

} // namespace

HistoryStore::HistoryStore(const StandardFolders &folders, QObject *parent)
    : QObject(parent),
      m_directory(folders.history()),
      m_folder(folders)
{
    m_pool.setMaxThreadCount(1);
    m_pool.setExpiryTimeout(-1);
    m_rescanDelay.setSingleShot(true);
    m_rescanDelay.setInterval(rescanDelay);
    connect(&m_rescanDelay, &QTimer::timeout, this, [this] { spawn(refresh()); });
}

HistoryStore::~HistoryStore()
{
    m_scope.end();
    waitForDone(m_pool);
    if (!m_waiting.isEmpty()) {
        const QSignalBlocker quiet(this);
        publish(m_folder.load());
        waitForDone(m_pool);
    }
}

void HistoryStore::startLoading()
{
    if (!std::exchange(m_isLoading, true))
        spawn(load());
}

QCoro::Task<> HistoryStore::load()
{
    publish(co_await m_scope(offMainThread(&m_pool, [folder = &m_folder] {
        folder->prepare();
        return folder->load();
    })));
}

void HistoryStore::publish(QList<TranscriptRecord> records)
{
    m_records = std::move(records);
    m_loaded = true;
    for (const auto &change : std::exchange(m_waiting, {}))
        change();
    Q_EMIT recordsChanged();
    Q_EMIT loadedChanged();
}

QCoro::Task<> HistoryStore::whenLoaded()
{
    if (m_loaded)
        co_return;
    startLoading();
    co_await offMainThread(&m_pool, [] {}); // the pool keeps the order
}

std::optional<TranscriptRecord> HistoryStore::record(const QUuid &id) const
{
    const auto found = std::ranges::find(m_records, id, &TranscriptRecord::id);
    return found == m_records.end() ? std::nullopt : std::optional(*found);
}

void HistoryStore::whenReady(std::function<void()> change)
{
    if (m_loaded) {
        change();
        return;
    }
    m_waiting.append(std::move(change));
    startLoading();
}

void HistoryStore::change(const QUuid &id, const std::function<void(TranscriptRecord &)> &change)
{
    whenReady([this, id, change] {
        const auto found = std::ranges::find(std::as_const(m_records), id, &TranscriptRecord::id);
        if (found == m_records.cend())
            return;
        TranscriptRecord &record = m_records[found - m_records.cbegin()];
        change(record);
        save(record);
        Q_EMIT recordsChanged();
    });
}

TranscriptRecord HistoryStore::add(TranscriptRecord record)
{
    if (!record.text.isEmpty())
        appendTo(record, RecordEvent::Kind::Transcription, record.text);
    whenReady([this, record] {
        m_records.prepend(record);
        save(record);
        Q_EMIT recordsChanged();
    });
    return record;
}

void HistoryStore::rename(const QUuid &id, const QString &title)
{
    const QString trimmed = title.trimmed();
    if (!trimmed.isEmpty())
        change(id, [trimmed](TranscriptRecord &record) { record.title = trimmed; });
}

void HistoryStore::setCorrected(const QUuid &id, const QString &text)
{
    change(id, [text](TranscriptRecord &record) {
        record.corrected = text;
        appendTo(record, RecordEvent::Kind::Correction, text);
    });
}

void HistoryStore::setSummary(const QUuid &id, const QString &text)
{
    change(id, [text](TranscriptRecord &record) {
        record.summary = text;
        appendTo(record, RecordEvent::Kind::Summary, text);
    });
}

void HistoryStore::appendEvent(const QUuid &id, RecordEvent::Kind kind, const std::optional<QString> &prompt,
                               const QString &text)
{
    change(id, [=](TranscriptRecord &record) { appendTo(record, kind, text, prompt); });
}

void HistoryStore::updateTranscription(const QUuid &id, const QList<TranscriptRecord::Segment> &segments,
                                       const QString &text, const QString &modelID,
                                       const QString &languageCode)
{
    change(id, [=](TranscriptRecord &record) {
        record.segments = segments;
        record.text = text;
        record.modelID = modelID;
        record.languageCode = languageCode;
        record.corrected.reset();
        record.summary.reset();
        if (!segments.isEmpty())
            record.durationMs = segments.last().end;
        appendTo(record, RecordEvent::Kind::Transcription, text);
    });
}

void HistoryStore::remove(const QUuid &id)
{
    whenReady([this, id] {
        if (m_records.removeIf([&id](const TranscriptRecord &record) { return record.id == id; }) == 0)
            return;
        spawn(write(id, [folder = &m_folder, id] { folder->remove(id); }));
        Q_EMIT recordsChanged();
    });
}

void HistoryStore::save(const TranscriptRecord &record)
{
    spawn(write(record.id, [folder = &m_folder, record] { folder->save(record); }));
}

QCoro::Task<> HistoryStore::write(QUuid id, std::function<void()> work)
{
    ++m_pendingWrites[id];
    QString failure;
    try {
        co_await m_scope(offMainThread(&m_pool, std::move(work)));
    } catch (const Gone &) {
        throw;
    } catch (const std::exception &error) {
        failure = descriptionOf(error);
    }
    if (--m_pendingWrites[id] == 0)
        m_pendingWrites.remove(id);
    noteOutcome(id, failure);
    followFolder();
}

void HistoryStore::noteOutcome(const QUuid &id, const QString &failure)
{
    if (failure.isEmpty())
        m_failures.remove(id);
    else
        m_failures.insert(id, failure);
    const QString shown = !failure.isEmpty()     ? failure
                          : m_failures.isEmpty() ? QString()
                                                 : *m_failures.cbegin();
    if (std::exchange(m_lastError, shown) != shown)
        Q_EMIT lastErrorChanged();
}

QCoro::Task<> HistoryStore::flush()
{
    if (!m_isLoading)
        co_return; // nothing was changed
    co_await m_scope(whenLoaded());
    // Behind every write that was asked for so far.
    co_await offMainThread(&m_pool, [] {});
}

QCoro::Task<> HistoryStore::whenSaved(QUuid id)
{
    co_await m_scope(flush());
    if (const auto failure = m_failures.constFind(id); failure != m_failures.cend())
        throw Error(*failure);
}

void HistoryStore::watch()
{
    if (m_watcher)
        return;
    m_watcher = new QFileSystemWatcher(this);
    connect(m_watcher, &QFileSystemWatcher::directoryChanged, this, [this] {
        if (!m_rescanDelay.isActive())
            m_rescanDelay.start();
    });
    spawn(followWhenLoaded());
}

QCoro::Task<> HistoryStore::followWhenLoaded()
{
    co_await m_scope(whenLoaded()); // loading makes the folder
    followFolder();
}

QCoro::Task<> HistoryStore::refresh()
{
    if (!m_isLoading) {
        co_await whenLoaded();
        co_return;
    }
    takeOver(co_await m_scope(offMainThread(&m_pool, [folder = &m_folder] { return folder->rescan(); })));
}

// Also after the folder was deleted and made again. What happened before it was watched is looked for.
void HistoryStore::followFolder()
{
    const bool lost = m_watcher && m_watcher->directories().isEmpty();
    if (lost && QFileInfo(m_directory).isDir() && m_watcher->addPath(m_directory))
        m_rescanDelay.start();
}

void HistoryStore::takeOver(const QHash<QUuid, QList<TranscriptRecord>> &changes)
{
    bool changed = false;
    for (const auto &[id, records] : changes.asKeyValueRange()) {
        if (!m_pendingWrites.contains(id))
            changed |= replace(id, records);
    }
    if (changed)
        Q_EMIT recordsChanged();
}

// What stays keeps its place in the list; what is new takes its place by time.
bool HistoryStore::replace(const QUuid &id, const QList<TranscriptRecord> &now)
{
    bool changed = false;
    qsizetype next = 0;
    for (qsizetype i = 0; i < m_records.size();) {
        if (m_records.at(i).id != id) {
            ++i;
            continue;
        }
        if (next == now.size()) {
            m_records.removeAt(i);
            changed = true;
            continue;
        }
        if (m_records.at(i) != now.at(next)) {
            m_records[i] = now.at(next);
            changed = true;
        }
        ++next;
        ++i;
    }
    for (; next < now.size(); ++next) {
        const auto place =
            std::ranges::find_if(std::as_const(m_records), [&](const TranscriptRecord &record) {
                return record.createdAt <= now.at(next).createdAt;
            });
        m_records.insert(place - m_records.cbegin(), now.at(next));
        changed = true;
    }
    return changed;
}

} // namespace orvane

#include "ui/presentation/FileQueue.h"

#include "base/Async.h"
#include "base/localization/Localization.h"
#include "ui/presentation/Spans.h"

#include <QFileInfo>

#include <algorithm>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace orvane {

FileQueue::FileQueue(Transcriber transcriber, QObject *parent)
    : RowModel({"key", "name", "state", "detail", "progress", "recordId", "canRise", "canSink"}, parent),
      m_transcriber(std::move(transcriber))
{}

FileQueue::~FileQueue()
{
    m_scope.end();
    m_stop.request_stop();
}

void FileQueue::add(const QList<QUrl> &urls)
{
    for (const QUrl &url : urls) {
        if (url.isLocalFile()) {
            m_entries.append({.key = ++m_lastKey, .path = url.toLocalFile()});
            continue;
        }
        m_entries.append(
            {.key = ++m_lastKey,
             .path = url.toDisplayString(),
             .state = State::Failed,
             .detail = Localization::text(u"Это не файл на этом компьютере. Сначала скопируйте его сюда.")});
    }
    show();
    if (!m_isWorking)
        spawn(work());
}

void FileQueue::choose()
{
    spawn(add());
}

QCoro::Task<> FileQueue::add()
{
    add(co_await m_scope(m_transcriber.choose()));
}

QCoro::Task<> FileQueue::work()
{
    m_isWorking = true;
    int count = 0;
    QUuid onlyRecord;
    while (true) {
        if (count > 0)
            co_await m_scope(sleepFor(0ms)); // who waits for the engine, such as a meeting, comes first
        const auto next = std::ranges::find(m_entries, State::Waiting, &Entry::state);
        if (next == m_entries.end())
            break;
        const int key = next->key;
        const QString path = next->path;
        next->state = State::Working;
        m_stop = std::stop_source();
        ++count;
        std::optional<QUuid> record;
        QString failure;
        show();
        try {
            record = co_await m_scope(m_transcriber.transcribe(path, m_stop.get_token()));
        } catch (const Gone &) {
            throw;
        } catch (const Cancelled &) {
            failure = Localization::text(u"Отменено");
        } catch (const std::exception &error) {
            failure = descriptionOf(error);
        }
        if (Entry *entry = find(key)) { // it may have been taken out meanwhile
            entry->state = failure.isEmpty() ? State::Done : State::Failed;
            entry->record = record.value_or(QUuid());
            entry->detail = failure;
        }
        show();
        onlyRecord = count == 1 ? record.value_or(QUuid()) : QUuid();
    }
    m_isWorking = false;
    Q_EMIT finished(onlyRecord);
}

bool FileQueue::waits(qsizetype index) const
{
    return index >= 0 && index < m_entries.size() && m_entries.at(index).state == State::Waiting;
}

void FileQueue::move(int from, int to)
{
    if (!waits(from) || !waits(to))
        return;
    m_entries.move(from, to);
    show();
}

void FileQueue::removeAt(int index)
{
    if (index < 0 || index >= m_entries.size())
        return;
    const bool isWorking = m_entries.at(index).state == State::Working;
    m_entries.removeAt(index);
    show();
    if (isWorking)
        m_stop.request_stop();
}

void FileQueue::retry(int index)
{
    if (index < 0 || index >= m_entries.size() || m_entries.at(index).state != State::Failed)
        return;
    const QString path = m_entries.takeAt(index).path;
    add({QUrl::fromLocalFile(path)});
}

void FileQueue::setProgress(const QString &stage, double fraction, qint64 remainingMs)
{
    Entry *entry = working();
    if (!entry)
        return;
    if (entry->detail.isEmpty())
        m_elapsed.start(); // the engine is free for it
    entry->progress = fraction;
    entry->detail = Spans::joined({stage, Spans::clock(m_elapsed.elapsed()), Spans::remaining(remainingMs)});
    show();
}

FileQueue::Entry *FileQueue::find(int key)
{
    const auto found = std::ranges::find(m_entries, key, &Entry::key);
    return found == m_entries.end() ? nullptr : &*found;
}

FileQueue::Entry *FileQueue::working()
{
    const auto found = std::ranges::find(m_entries, State::Working, &Entry::state);
    return found == m_entries.end() ? nullptr : &*found;
}

QString FileQueue::detailOf(const Entry &entry)
{
    if (entry.state == State::Waiting)
        return Localization::text(u"Ждёт очереди");
    if (entry.state == State::Done)
        return entry.record.isNull() ? Localization::text(u"речь не найдена") : Localization::text(u"Готово");
    const bool waitsForEngine = entry.state == State::Working && entry.detail.isEmpty();
    return waitsForEngine ? Localization::text(u"Ждёт, пока освободится движок") : entry.detail;
}

void FileQueue::show()
{
    static const QStringList states = {u"waiting"_s, u"working"_s, u"done"_s, u"failed"_s};
    QList<QVariantMap> rows;
    for (qsizetype i = 0; i < m_entries.size(); ++i) {
        const Entry &entry = m_entries.at(i);
        rows.append({{u"key"_s, entry.key},
                     {u"name"_s, QFileInfo(entry.path).fileName()},
                     {u"state"_s, states.at(int(entry.state))},
                     {u"detail"_s, detailOf(entry)},
                     {u"progress"_s, entry.progress},
                     {u"recordId"_s, entry.record.isNull() ? QString() : entry.record.toString()},
                     {u"canRise"_s, waits(i) && waits(i - 1)},
                     {u"canSink"_s, waits(i) && waits(i + 1)}});
    }
    setRows(rows);
}

} // namespace orvane

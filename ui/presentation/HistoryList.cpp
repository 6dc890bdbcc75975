#include "ui/presentation/HistoryList.h"

#include "base/Async.h"
#include "base/localization/Localization.h"
#include "history/HistoryStore.h"
#include "ui/presentation/Notices.h"
#include "ui/presentation/RecordSaver.h"
#include "ui/presentation/Spans.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace orvane {

namespace {

QString detailOf(const RecordSummary &record)
{
    QStringList parts = {Spans::clock(record.durationMs)};
    if (record.hasProtocol)
        parts.append(Localization::text(u"протокол"));
    else if (record.isCorrected)
        parts.append(Localization::text(u"исправлено"));
    return parts.join(u" · "_s);
}

} // namespace

HistoryList::HistoryList(HistoryStore &history, RecordSaver &saver, Notices &notices, QObject *parent)
    : ListModel(parent),
      m_history(history),
      m_saver(saver),
      m_notices(notices)
{
    connect(&history, &HistoryStore::recordsChanged, this, &HistoryList::show);
    const auto searchAmongThem = [this] {
        if (!m_search.trimmed().isEmpty())
            searchAnew();
    };
    connect(&history, &HistoryStore::recordsChanged, this, searchAmongThem);
    connect(&history, &HistoryStore::recordChanged, this, searchAmongThem);
    connect(&history, &HistoryStore::loadedChanged, this, &HistoryList::loadedChanged);
    connect(&history, &HistoryStore::lastErrorChanged, this, &HistoryList::errorChanged);
    spawn(history.whenLoaded());
    show();
}

HistoryList::~HistoryList()
{
    m_scope.end();
    removeForGood();
}

bool HistoryList::isLoaded() const
{
    return m_history.isLoaded();
}

QString HistoryList::error() const
{
    return m_history.lastError();
}

void HistoryList::setSearch(const QString &words)
{
    if (m_search == words)
        return;
    m_search = words;
    Q_EMIT searchChanged();
    searchAnew();
}

void HistoryList::searchAnew()
{
    m_mustSearchAgain = true;
    if (!m_isSearching)
        spawn(find());
}

// One search at a time: who types quicker than it answers waits for the last one alone.
QCoro::Task<> HistoryList::find()
{
    m_isSearching = true;
    while (std::exchange(m_mustSearchAgain, false)) {
        const QString words = m_search.trimmed();
        std::optional<QSet<QUuid>> found;
        if (!words.isEmpty())
            found = co_await m_scope(search(words));
        if (m_mustSearchAgain)
            continue;
        m_found = found;
        show();
    }
    m_isSearching = false;
}

/// Nothing is found by a search that fails, and why is said.
QCoro::Task<QSet<QUuid>> HistoryList::search(QString words)
{
    QString failure;
    try {
        co_return co_await m_scope(m_history.search(words));
    } catch (const Cancelled &) {
        throw;
    } catch (const std::exception &error) {
        failure = descriptionOf(error);
    }
    m_notices.show(failure);
    co_return {};
}

void HistoryList::show()
{
    if (m_isRemoving)
        return;
    QList<RecordSummary> rows;
    rows.reserve(m_history.records().size());
    for (const RecordSummary &record : m_history.records()) {
        if (!m_removing.contains(record.id) && (!m_found || m_found->contains(record.id)))
            rows.append(record);
    }
    setRows(rows);
}

const RecordSummary *HistoryList::record(const QString &id) const
{
    const auto found = std::ranges::find(m_history.records(), QUuid(id), &RecordSummary::id);
    return found == m_history.records().end() ? nullptr : &*found;
}

QStringList HistoryList::selection() const
{
    QStringList ids;
    if (m_selected.isEmpty())
        return ids;
    for (const RecordSummary &record : rows()) {
        if (m_selected.contains(record.id))
            ids.append(record.id.toString());
    }
    return ids;
}

void HistoryList::toggleSelected(int row)
{
    if (row < 0 || row >= count())
        return;
    QSet<QUuid> ids = m_selected;
    if (const QUuid id = rows().at(row).id; !ids.remove(id))
        ids.insert(id);
    m_selectedLast = row;
    setSelected(ids);
}

void HistoryList::selectTo(int row)
{
    if (row < 0 || row >= count())
        return;
    const int from = std::clamp(m_selectedLast < 0 ? row : m_selectedLast, 0, count() - 1);
    QSet<QUuid> ids;
    for (int i = std::min(from, row); i <= std::max(from, row); ++i)
        ids.insert(rows().at(i).id);
    setSelected(ids);
}

void HistoryList::clearSelection()
{
    m_selectedLast = -1;
    setSelected({});
}

void HistoryList::setSelected(const QSet<QUuid> &ids)
{
    if (m_selected == ids)
        return;
    m_selected = ids;
    if (count() > 0)
        Q_EMIT dataChanged(index(0), index(count() - 1), {SelectedRole});
    Q_EMIT selectionChanged();
}

void HistoryList::rename(const QString &id, const QString &title)
{
    m_history.rename(QUuid(id), title);
}

QString HistoryList::removalTitle(const QStringList &ids) const
{
    if (ids.size() > 1)
        return Localization::text(u"Удалить выбранные расшифровки (%1)?").arg(ids.size());
    const RecordSummary *one = ids.isEmpty() ? nullptr : record(ids.constFirst());
    return Localization::text(u"Удалить «") + (one ? one->title : QString()) + Localization::text(u"»?");
}

QString HistoryList::removalText(const QStringList &ids) const
{
    const bool hasRecording = std::ranges::any_of(ids, [this](const QString &id) {
        const RecordSummary *one = record(id);
        return one && one->kind == TranscriptKind::Meeting;
    });
    return hasRecording
               ? Localization::text(u"Текст расшифровки будет удалён без возможности восстановления. "
                                    "Аудиозапись совещания останется на диске.")
               : Localization::text(u"Текст расшифровки будет удалён без возможности восстановления.");
}

void HistoryList::remove(const QStringList &ids)
{
    m_notices.end(); // what was deleted before is, for good
    clearSelection();
    for (const QString &id : ids) {
        m_removing.insert(QUuid(id));
        Q_EMIT removed(QUuid(id));
    }
    show();
    m_notices.offer(
        ids.size() > 1 ? Localization::text(u"Удалено расшифровок: %1").arg(ids.size())
                       : Localization::text(u"Расшифровка удалена"),
        Localization::text(u"Вернуть"),
        [this] {
            m_removing.clear();
            show();
        },
        [this] { removeForGood(); });
}

void HistoryList::removeForGood()
{
    m_isRemoving = true; // the list is without them already
    for (const QUuid &id : std::exchange(m_removing, {}))
        m_history.remove(id);
    m_isRemoving = false;
}

void HistoryList::save(const QStringList &ids, const QString &format)
{
    QList<QUuid> records;
    for (const QString &id : ids)
        records.append(QUuid(id));
    m_saver.save(records, format);
}

QString HistoryList::dayName(const QString &day) const
{
    return Spans::day(QDate::fromString(day, Qt::ISODate), QDate::currentDate());
}

void HistoryList::relabel()
{
    if (count() > 0)
        Q_EMIT dataChanged(index(0), index(count() - 1), {DetailRole, KindNameRole});
}

QVariant HistoryList::data(const QModelIndex &index, int role) const
{
    if (!index.isValid() || index.row() >= count())
        return {};
    const RecordSummary &record = rows().at(index.row());
    switch (role) {
    case IdRole:
        return record.id.toString();
    case TitleRole:
        return record.title;
    case DetailRole:
        return detailOf(record);
    case TimeRole:
        return Spans::time(record.createdAt);
    case KindRole:
        return rawValue(record.kind);
    case KindNameRole:
        return orvane::title(record.kind);
    case DayRole:
        return record.createdAt.toLocalTime().date().toString(Qt::ISODate);
    case SelectedRole:
        return m_selected.contains(record.id);
    default:
        return {};
    }
}

QHash<int, QByteArray> HistoryList::roleNames() const
{
    return {{IdRole, "recordId"}, {TitleRole, "title"},        {DetailRole, "detail"},
            {TimeRole, "time"},   {KindNameRole, "kindName"},  {KindRole, "kind"},
            {DayRole, "day"},     {SelectedRole, "isSelected"}};
}

} // namespace orvane

#include "app/commandline/HistoryAccess.h"

#include "base/Error.h"
#include "base/localization/Localization.h"

using namespace Qt::StringLiterals;

namespace orvane::HistoryAccess {

QCoro::Task<TranscriptRecord> recordNamed(HistoryStore *history, QString id)
{
    co_await history->whenLoaded();
    std::optional<QUuid> found;
    for (const RecordSummary &record : history->records()) {
        if (!uuidText(record.id).startsWith(id, Qt::CaseInsensitive))
            continue;
        if (found)
            throw Error(Localization::text(u"Под это обозначение подходит несколько записей: ") + id);
        found = record.id;
    }
    if (!found)
        throw Error(Localization::text(u"В истории нет записи ") + id);
    co_return co_await history->record(*found);
}

QCoro::Task<> untilSaved(HistoryStore *history)
{
    co_await history->flush();
    if (const QString error = history->lastError(); !error.isEmpty())
        throw Error(error);
}

} // namespace orvane::HistoryAccess

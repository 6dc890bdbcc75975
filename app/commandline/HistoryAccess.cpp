#include "app/commandline/HistoryAccess.h"

#include "base/Error.h"
#include "base/localization/Localization.h"

using namespace Qt::StringLiterals;

namespace orvane::HistoryAccess {

TranscriptRecord recordNamed(const HistoryStore &history, const QString &id)
{
    const TranscriptRecord *found = nullptr;
    for (const TranscriptRecord &record : history.records()) {
        if (!uuidText(record.id).startsWith(id, Qt::CaseInsensitive))
            continue;
        if (found && found->id != record.id)
            throw Error(Localization::text(u"Под это обозначение подходит несколько записей: ") + id);
        if (!found)
            found = &record;
    }
    if (!found)
        throw Error(Localization::text(u"В истории нет записи ") + id);
    return *found;
}

QCoro::Task<> untilSaved(HistoryStore *history)
{
    co_await history->flush();
    if (const QString error = history->lastError(); !error.isEmpty())
        throw Error(error);
}

} // namespace orvane::HistoryAccess

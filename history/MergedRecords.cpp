#include "history/MergedRecords.h"

#include <QHash>

#include <utility>

namespace orvane {

MergedRecords mergedRecords(const QList<RecordSummary> &listed, const QList<RecordSummary> &now,
                            const std::function<bool(const QUuid &)> &isPending)
{
    MergedRecords merged;
    QHash<QUuid, const RecordSummary *> unmet;
    for (const RecordSummary &record : now)
        unmet.insert(record.id, &record);
    QList<RecordSummary> staying;
    for (const RecordSummary &record : listed) {
        const RecordSummary *fresh = unmet.take(record.id);
        if (isPending(record.id)) {
            staying.append(record);
        } else if (fresh) {
            staying.append(*fresh);
            if (*fresh != record)
                merged.changed.append(record.id);
        }
    }

    merged.records.reserve(now.size());
    auto next = staying.cbegin();
    for (const RecordSummary &record : now) {
        if (!unmet.contains(record.id) || isPending(record.id))
            continue;
        while (next != staying.cend() && next->createdAt > record.createdAt)
            merged.records.append(*next++);
        merged.records.append(record);
    }
    merged.records.append(QList(next, staying.cend()));
    return merged;
}

} // namespace orvane

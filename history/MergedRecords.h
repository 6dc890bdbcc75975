#pragma once

#include "history/RecordSummary.h"

#include <QList>
#include <QUuid>

#include <functional>

namespace orvane {

/// A list of records after their files have been read again.
struct MergedRecords
{
    QList<RecordSummary> records;
    /// Those that were listed before and are no longer what they were.
    QList<QUuid> changed;
};

/// What stays keeps its place in the list; what is new takes its place by time. A change that is still on its
/// way to the disk is not undone: `isPending` says of which record there is one.
[[nodiscard]] MergedRecords mergedRecords(const QList<RecordSummary> &listed, const QList<RecordSummary> &now,
                                          const std::function<bool(const QUuid &id)> &isPending);

} // namespace orvane

#pragma once

#include "history/TranscriptRecord.h"

#include <QDateTime>
#include <QString>
#include <QUuid>

namespace orvane {

/// What lists show of a record.
struct RecordSummary
{
    QUuid id;
    TranscriptKind kind = TranscriptKind::File;
    QString title;
    QDateTime createdAt;
    qint64 durationMs = 0;
    bool isCorrected = false;
    bool hasProtocol = false;
    /// The first words of the text on one line.
    QString beginning;
    /// Nanoseconds since 1970 when its file was changed; 0 for a record that is not on disk yet.
    qint64 fileChanged = 0;

    [[nodiscard]] static RecordSummary of(const TranscriptRecord &record, qint64 fileChanged = 0);

    bool operator==(const RecordSummary &) const = default;
};

} // namespace orvane

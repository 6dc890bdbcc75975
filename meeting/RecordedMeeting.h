#pragma once

#include "history/TranscriptRecord.h"

#include <QByteArray>
#include <QDateTime>
#include <QString>

#include <optional>

namespace orvane {

/// A meeting whose audio is, or is being, recorded.
struct RecordedMeeting
{
    /// In the recordings folder.
    QString audioFileName;
    QString modelID;
    QString languageCode;
    QDateTime startedAt;
    /// Of the audio; 0 while it is being recorded.
    qint64 durationMs = 0;

    /// What stands beside the audio until the meeting is dealt with: all but the name and the duration,
    /// which the files tell.
    [[nodiscard]] QByteArray json() const;
    [[nodiscard]] static std::optional<RecordedMeeting> fromJson(const QByteArray &json);

    bool operator==(const RecordedMeeting &) const = default;
};

/// The record of a meeting in which that was said, not yet in the history.
[[nodiscard]] TranscriptRecord recordOf(const RecordedMeeting &meeting,
                                        const QList<DisplaySegment> &segments);

/// Such as "Совещание · 3 марта, 14:05", in the interface language.
[[nodiscard]] QString meetingTitle(const QDateTime &startedAt);

} // namespace orvane

#pragma once

#include "transcript/RawSegment.h"

#include <QList>
#include <QString>
#include <QUuid>

#include <optional>

namespace orvane {

/// A piece of speech as transcripts, history, exports and views use it.
struct DisplaySegment
{
    /// Tells rows of a list apart; fresh for every segment made.
    QUuid id = QUuid::createUuid();
    /// Milliseconds from the beginning of the audio.
    qint64 start = 0;
    qint64 end = 0;
    QString text;
    /// Number of the speaker's voice, from 1; none until labelled.
    std::optional<qint64> speaker;

    [[nodiscard]] static DisplaySegment from(const RawSegment &raw);
    [[nodiscard]] static QList<DisplaySegment> from(const QList<RawSegment> &raw);

    /// The start as "7:05", from one hour on as "1:02:03"; fractions of a second are cut off.
    [[nodiscard]] QString timecode() const;

    bool operator==(const DisplaySegment &) const = default;
};

/// The segments' texts one after the other, with nothing between them.
[[nodiscard]] QString joinedText(const QList<DisplaySegment> &segments);

/// "7:05" or "1:02:03" for a non-negative number of milliseconds.
[[nodiscard]] QString timecodeOf(qint64 milliseconds);

} // namespace orvane

#pragma once

#include "base/files/FileLock.h"
#include "meeting/RecordedMeeting.h"

#include <QList>
#include <QSet>
#include <QString>

#include <map>
#include <optional>

namespace orvane {

/// The folder of meeting audio. Beside each recording that is not yet dealt with lies a marker, so that a
/// crash, a kill or a power loss leaves a recording that is found again. Until then its audio is locked, so
/// that another program on the same folder keeps off. No recording with a sound in it is ever deleted here.
/// Any thread, one at a time.
class RecordingsFolder
{
public:
    explicit RecordingsFolder(const QString &folder);

    /// Makes an empty audio file with a name of its own, and its marker; both readable by their owner only.
    /// Returns the meeting with that name. Throws FileError, and leaves nothing then.
    [[nodiscard]] RecordedMeeting create(RecordedMeeting meeting);

    /// For a recording that did not begin: removes the file and its marker. Failures are ignored.
    void discard(const RecordedMeeting &meeting);
    /// The meeting is dealt with: removes the marker alone. Failures are ignored.
    void forget(const RecordedMeeting &meeting);

    struct Leftovers
    {
        /// Oldest first.
        QList<RecordedMeeting> meetings;
        /// Why one of them cannot be offered, a sentence in the interface language; empty when all can.
        QString problem;
    };

    /// What earlier runs left behind and nobody holds, each file repaired so that it can be played. Those
    /// without a sound are dealt with.
    [[nodiscard]] Leftovers leftovers();

    [[nodiscard]] QString audioPath(const QString &fileName) const;

private:
    /// The recording that the marker names, if it is to be offered. Throws FileError.
    [[nodiscard]] std::optional<RecordedMeeting> takeOver(const QString &audioFileName);
    [[nodiscard]] QString createAudio(const QDateTime &startedAt) const;
    void writeMarker(const RecordedMeeting &meeting) const;
    [[nodiscard]] RecordedMeeting readMarker(const QString &audioFileName) const;
    [[nodiscard]] QString markerPath(const QString &audioFileName) const;

    const QString m_folder;
    /// Of what is recorded or offered by this object, by file name.
    std::map<QString, FileLock> m_locks;
};

} // namespace orvane

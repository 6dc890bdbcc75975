#pragma once

#include "transcript/DisplaySegment.h"

#include <QDateTime>
#include <QList>
#include <QMap>
#include <QString>
#include <QUrl>
#include <QUuid>

#include <optional>

namespace orvane {

enum class TranscriptKind { File, Meeting };

/// The word stored in record files.
[[nodiscard]] QString rawValue(TranscriptKind kind);
/// The word shown to the user.
[[nodiscard]] QString title(TranscriptKind kind);

/// One operation on a record and the text that it produced.
struct RecordEvent
{
    enum class Kind { Transcription, Correction, Summary, Prompt };

    QUuid id = QUuid::createUuid();
    QDateTime ts = QDateTime::currentDateTimeUtc();
    Kind kind = Kind::Transcription;
    /// The user's question; only with Kind::Prompt.
    std::optional<QString> prompt;
    QString text;

    bool operator==(const RecordEvent &) const = default;
};

/// The word stored in record files.
[[nodiscard]] QString rawValue(RecordEvent::Kind kind);
/// What the user is shown.
[[nodiscard]] QString title(RecordEvent::Kind kind);

/// What the user calls speakers, by number; the others are called by their number.
using SpeakerNames = QMap<qint64, QString>;

/// One entry of the history: what was recognised in a meeting or a media file, and what was made of it.
struct TranscriptRecord
{
    struct Segment
    {
        /// Milliseconds from the beginning of the audio.
        qint64 start = 0;
        qint64 end = 0;
        QString text;
        /// Number of the speaker's voice; none when not labelled.
        std::optional<qint64> speaker;

        bool operator==(const Segment &) const = default;
    };

    /// Also the name of the record's file.
    QUuid id = QUuid::createUuid();
    TranscriptKind kind = TranscriptKind::File;
    QString title;
    /// Stored to whole seconds.
    QDateTime createdAt = QDateTime::currentDateTimeUtc();
    QString modelID;
    QString languageCode;
    qint64 durationMs = 0;
    QList<Segment> segments;
    /// The whole transcript as plain text.
    QString text;
    /// The text after correction by a language model.
    std::optional<QString> corrected;
    /// Name, without folder, of a meeting's audio in the recordings folder.
    std::optional<QString> audioFileName;
    /// The meeting's protocol.
    std::optional<QString> summary;
    /// Oldest first. A list without entries is stored, an absent one is not.
    std::optional<QList<RecordEvent>> events;
    /// Absolute path of the transcribed media file.
    std::optional<QString> sourceFilePath;
    /// Not stored when empty.
    SpeakerNames speakerNames;

    /// The record as it is stored and exported: UTF-8, indented, keys sorted, absent optionals left out.
    /// TranscriptRecordReader reads it back.
    [[nodiscard]] QByteArray json() const;

    /// The segments for views and exports, each with a fresh id.
    [[nodiscard]] QList<DisplaySegment> displaySegments() const;
    [[nodiscard]] static QList<Segment> segmentsFrom(const QList<DisplaySegment> &segments);

    /// The audio to play: the meeting's recording, else the transcribed file; none when neither exists.
    [[nodiscard]] std::optional<QUrl> playableURL(const QString &recordingsFolder) const;

    bool operator==(const TranscriptRecord &) const = default;
};

/// The id as record files write it and are named: 36 upper-case characters.
[[nodiscard]] QString uuidText(const QUuid &id);
/// The name of a record's file in the history folder.
[[nodiscard]] QByteArray recordFileName(const QUuid &id);

} // namespace orvane

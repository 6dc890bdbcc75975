#pragma once

#include "base/StandardFolders.h"
#include "history/TranscriptRecord.h"
#include "history/TranscriptRecordReader.h"
#include "tests/support/Files.h"

namespace orvane::Samples {

inline QDateTime moment(qint64 minute = 0)
{
    return QDateTime(QDate(2025, 3, 3), QTime(14, 5, 9), Qt::UTC).addSecs(60 * minute);
}

/// Every field present.
inline TranscriptRecord fullRecord()
{
    using namespace Qt::StringLiterals;
    TranscriptRecord record;
    record.id = QUuid::fromString(u"0a1b2c3d-4e5f-4607-8899-aabbccddeeff"_s);
    record.kind = TranscriptKind::Meeting;
    record.title = u"Планёрка / «среда»"_s;
    record.createdAt = moment();
    record.modelID = u"base"_s;
    record.languageCode = u"ru"_s;
    record.durationMs = 7500;
    record.segments = {{.start = 0, .end = 4000, .text = u" Привет."_s, .speaker = 1},
                       {.start = 4000, .end = 7500, .text = u" Пока."_s, .speaker = {}}};
    record.text = u"Привет. Пока."_s;
    record.corrected = u"Привет! Пока."_s;
    record.audioFileName = u"Совещание 2025-03-03 14.05.09.wav"_s;
    record.summary = u"Поздоровались."_s;
    record.events = {RecordEvent{.id = QUuid::fromString(u"11111111-2222-4333-8444-555555555555"_s),
                                 .ts = moment(1),
                                 .kind = RecordEvent::Kind::Prompt,
                                 .prompt = u"Кто был?"_s,
                                 .text = u"Двое."_s}};
    record.sourceFilePath = u"/home/user/встреча.mp4"_s;
    return record;
}

/// No optional field present.
inline TranscriptRecord plainRecord(const QString &title, qint64 minute = 0)
{
    TranscriptRecord record;
    record.title = title;
    record.createdAt = moment(minute);
    record.text = title;
    return record;
}

using test::contentOf;
using test::put;

inline StandardFolders foldersIn(const QString &folder)
{
    return {.applicationSupport = folder, .resources = {}, .temporary = {}};
}

inline QString pathOf(const StandardFolders &folders, const QUuid &id)
{
    return folders.history() + u'/' + uuidText(id) + QStringLiteral(".json");
}

/// What the record's file holds now.
inline std::optional<TranscriptRecord> onDisk(const StandardFolders &folders, const QUuid &id)
{
    return TranscriptRecordReader().read(contentOf(pathOf(folders, id)));
}

} // namespace orvane::Samples

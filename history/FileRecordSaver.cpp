#include "history/FileRecordSaver.h"

#include "history/HistoryStore.h"

#include <QFileInfo>

namespace orvane {

namespace {

// A name that is all extension (".wav") is the title as a whole.
QString titleOf(const QFileInfo &file)
{
    const QString base = file.completeBaseName();
    return base.isEmpty() ? file.fileName() : base;
}

} // namespace

TranscriptRecord FileTranscript::record() const
{
    const QFileInfo file(path);
    TranscriptRecord record;
    record.kind = TranscriptKind::File;
    record.title = title.isEmpty() ? titleOf(file) : title;
    record.modelID = modelID;
    record.languageCode = languageCode;
    record.durationMs = length ? qint64(length->count()) : segments.isEmpty() ? 0 : segments.last().end;
    record.segments = TranscriptRecord::segmentsFrom(segments);
    record.text = text;
    if (title.isEmpty())
        record.sourceFilePath = file.absoluteFilePath();
    return record;
}

std::optional<QUuid> FileRecordSaver::save(const FileTranscript &transcript) const
{
    if (transcript.text.trimmed().isEmpty())
        return std::nullopt;
    const QUuid id = m_history.add(transcript.record()).id;
    if (!transcript.remark.isEmpty())
        m_history.appendEvent(id, RecordEvent::Kind::Transcription, std::nullopt, transcript.remark);
    return id;
}

} // namespace orvane

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

std::optional<QUuid> FileRecordSaver::save(const FileTranscript &transcript) const
{
    if (transcript.text.trimmed().isEmpty())
        return std::nullopt;

    const QFileInfo file(transcript.path);
    TranscriptRecord record;
    record.kind = TranscriptKind::File;
    record.title = titleOf(file);
    record.modelID = transcript.modelID;
    record.languageCode = transcript.languageCode;
    record.durationMs = transcript.segments.isEmpty() ? 0 : transcript.segments.last().end;
    record.segments = TranscriptRecord::segmentsFrom(transcript.segments);
    record.text = transcript.text;
    record.sourceFilePath = file.absoluteFilePath();
    return m_history.add(record).id;
}

} // namespace orvane

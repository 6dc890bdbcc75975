#include "processing/RecordProcessor.h"

#include "base/Async.h"
#include "base/localization/Localization.h"
#include "correction/TextCorrectionService.h"
#include "history/HistoryStore.h"

#include <QScopeGuard>

using namespace Qt::StringLiterals;

namespace orvane {

RecordProcessor::RecordProcessor(Collaborators collaborators, QObject *parent)
    : QObject(parent),
      m_history(collaborators.history),
      m_corrector(collaborators.corrector),
      m_transcriber(collaborators.transcriber),
      m_recordingsFolder(std::move(collaborators.recordingsFolder))
{
    connect(&m_operation, &Operation::runningChanged, this, &RecordProcessor::recordChanged);
    connect(&m_operation, &Operation::errorChanged, this, &RecordProcessor::errorChanged);
    connect(&m_operation, &Operation::progressChanged, this, &RecordProcessor::progressChanged);
}

RecordProcessor::~RecordProcessor()
{
    m_scope.end();
}

QCoro::Task<QString> RecordProcessor::correct(QUuid id, QString modelFile)
{
    return process(
        id,
        [modelFile](TextCorrectionService *corrector, QString text, std::stop_token stop) {
            return corrector->correct(text, stop, modelFile);
        },
        [id](HistoryStore *history, const QString &corrected) { history->setCorrected(id, corrected); });
}

QCoro::Task<QString> RecordProcessor::summarize(QUuid id, QString modelFile)
{
    return process(
        id,
        [modelFile](TextCorrectionService *corrector, QString text, std::stop_token stop) {
            return corrector->summarize(text, stop, modelFile);
        },
        [id](HistoryStore *history, const QString &summary) { history->setSummary(id, summary); });
}

QCoro::Task<QString> RecordProcessor::ask(QUuid id, QString question, QString modelFile)
{
    return process(
        id,
        [question, modelFile](TextCorrectionService *corrector, QString text, std::stop_token stop) {
            return corrector->process(text, question, stop, modelFile);
        },
        [id, question](HistoryStore *history, const QString &answer) {
            history->appendEvent(id, RecordEvent::Kind::Prompt, question, answer);
        });
}

QCoro::Task<QString> RecordProcessor::transcribeAnew(QUuid id, Recognition recognition)
{
    return run(id, [this, id, recognition](Progress progress, std::stop_token stop) {
        return transcribed(id, recognition, progress, stop);
    });
}

QCoro::Task<QString> RecordProcessor::process(QUuid id, Process process, Store store)
{
    return run(id, [this, id, process, store](Progress, std::stop_token stop) {
        return processed(id, process, store, stop);
    });
}

QCoro::Task<QString> RecordProcessor::run(QUuid id, Operation::Work<QString> work)
{
    if (m_operation.isRunning())
        throw Error(EngineTurns::waitText());
    m_record = id;
    co_return co_await m_scope(m_operation.run(work));
}

QCoro::Task<QString> RecordProcessor::processed(QUuid id, Process process, Store store, std::stop_token stop)
{
    const QString text = (co_await m_scope(m_history.record(id), stop)).text;
    if (text.trimmed().isEmpty())
        throw Error(Localization::text(u"В записи нет текста."));
    const auto connection =
        connect(&m_corrector, &TextCorrectionService::progressChanged, &m_operation,
                [this] { m_operation.setProgress(m_corrector.progress(), m_corrector.remainingMs()); });
    const auto disconnect = qScopeGuard([connection] { QObject::disconnect(connection); });
    const QString result = co_await m_scope(process(&m_corrector, text, stop), stop);
    co_await m_scope(requireStill(id, stop), stop);
    store(&m_history, result);
    co_return result;
}

QCoro::Task<QString> RecordProcessor::transcribed(QUuid id, Recognition recognition, Progress progress,
                                                  std::stop_token stop)
{
    const TranscriptRecord record = co_await m_scope(m_history.record(id), stop);
    const auto playable = [record, folder = m_recordingsFolder] { return record.playableURL(folder); };
    const std::optional<QUrl> audio = co_await m_scope(offMainThread(playable), stop);
    if (!audio) {
        throw Error(
            Localization::text(u"Аудиофайл этой записи не найден, поэтому расшифровать её заново нельзя."));
    }
    TranscriptionService::Request request;
    request.audioPath = audio->toLocalFile();
    request.model = recognition.model;
    request.language = recognition.language;
    request.speakers = recognition.speakers;
    const Transcript transcript =
        co_await m_scope(m_transcriber.transcribeDetached(request, stop, progress), stop);
    const QList<DisplaySegment> &segments = transcript.segments;
    const QString text = joinedText(segments);
    co_await m_scope(requireStill(id, stop), stop);
    m_history.updateTranscription(id, TranscriptRecord::segmentsFrom(segments), text, recognition.model.id,
                                  recognition.language);
    if (const QString damage = transcript.damageText(); !damage.isEmpty()) {
        m_history.appendEvent(id, RecordEvent::Kind::Transcription, std::nullopt, damage);
        m_operation.setError(damage);
    }
    co_return text;
}

// Minutes may have passed, in which another program deleted the record.
QCoro::Task<> RecordProcessor::requireStill(QUuid id, std::stop_token stop)
{
    static_cast<void>(co_await m_scope(m_history.record(id), stop));
}

} // namespace orvane

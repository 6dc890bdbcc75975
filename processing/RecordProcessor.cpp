#include "processing/RecordProcessor.h"

#include "base/AnyStop.h"
#include "base/Async.h"
#include "base/localization/Localization.h"
#include "correction/TextCorrectionService.h"
#include "history/HistoryStore.h"

using namespace Qt::StringLiterals;

namespace orvane {

namespace {

TranscriptRecord found(const HistoryStore &history, const QUuid &id)
{
    if (std::optional<TranscriptRecord> record = history.record(id))
        return *std::move(record);
    throw Error(Localization::text(u"В истории нет записи ") + uuidText(id));
}

} // namespace

RecordProcessor::RecordProcessor(Collaborators collaborators, QObject *parent)
    : QObject(parent),
      m_history(collaborators.history),
      m_corrector(collaborators.corrector),
      m_transcriber(collaborators.transcriber),
      m_recordingsFolder(std::move(collaborators.recordingsFolder))
{}

RecordProcessor::~RecordProcessor()
{
    m_cancellation.request_stop();
}

QCoro::Task<RecordProcessor::Text> RecordProcessor::correct(QUuid id, QString modelFile)
{
    return process(
        id,
        [modelFile](TextCorrectionService *corrector, QString text, std::stop_token stop) {
            return corrector->correct(text, stop, modelFile);
        },
        [id](HistoryStore *history, const QString &corrected) { history->setCorrected(id, corrected); });
}

QCoro::Task<RecordProcessor::Text> RecordProcessor::summarize(QUuid id, QString modelFile)
{
    return process(
        id,
        [modelFile](TextCorrectionService *corrector, QString text, std::stop_token stop) {
            return corrector->summarize(text, stop, modelFile);
        },
        [id](HistoryStore *history, const QString &summary) { history->setSummary(id, summary); });
}

QCoro::Task<RecordProcessor::Text> RecordProcessor::ask(QUuid id, QString question, QString modelFile)
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

QCoro::Task<RecordProcessor::Text> RecordProcessor::transcribeAnew(QUuid id, Recognition recognition)
{
    return run(id,
               [this, id, recognition](std::stop_token stop) { return transcribed(id, recognition, stop); });
}

QCoro::Task<RecordProcessor::Text> RecordProcessor::process(QUuid id, Process process, Store store)
{
    return run(
        id, [this, id, process, store](std::stop_token stop) { return processed(id, process, store, stop); });
}

QCoro::Task<RecordProcessor::Text> RecordProcessor::run(QUuid id, Work work)
{
    if (!m_record.isNull())
        co_return std::nullopt;
    m_cancellation = std::stop_source();
    const std::stop_token stop = m_cancellation.get_token();
    setError({});
    setRecord(id);

    Text result;
    QString failure;
    try {
        result = co_await work(stop);
    } catch (const Cancelled &) {
        // Whoever cancelled knows.
    } catch (const std::exception &error) {
        failure = QString::fromUtf8(error.what());
    }
    // From its cancellation on, the state is the next operation's.
    if (stop.stop_requested())
        co_return std::nullopt;
    setError(failure);
    setRecord({});
    co_return result;
}

QCoro::Task<QString> RecordProcessor::processed(QUuid id, Process process, Store store, std::stop_token stop)
{
    const QString text = found(m_history, id).text;
    if (text.trimmed().isEmpty())
        throw Error(Localization::text(u"В записи нет текста."));
    const QString result = co_await process(&m_corrector, text, stop);
    throwIfCancelled(stop);
    co_await requireStill(id, stop);
    store(&m_history, result);
    co_return result;
}

QCoro::Task<QString> RecordProcessor::transcribed(QUuid id, Recognition recognition, std::stop_token stop)
{
    const auto playable = [record = found(m_history, id), folder = m_recordingsFolder] {
        return record.playableURL(folder);
    };
    const std::optional<QUrl> audio = co_await offMainThread(playable);
    throwIfCancelled(stop);
    if (!audio) {
        throw Error(
            Localization::text(u"Аудиофайл этой записи не найден, поэтому расшифровать её заново нельзя."));
    }
    TranscriptionService::Request request;
    request.audioPath = audio->toLocalFile();
    request.model = recognition.model;
    request.language = recognition.language;
    request.speakers = recognition.speakers;
    const Transcript transcript = co_await m_transcriber.transcribeDetached(request, stop);
    throwIfCancelled(stop);
    const QList<DisplaySegment> &segments = transcript.segments;
    const QString text = joinedText(segments);
    co_await requireStill(id, stop);
    m_history.updateTranscription(id, TranscriptRecord::segmentsFrom(segments), text, recognition.model.id,
                                  recognition.language);
    co_return text;
}

// Minutes may have passed, in which another program renamed the record, asked about it or deleted it.
QCoro::Task<> RecordProcessor::requireStill(QUuid id, std::stop_token stop)
{
    co_await m_history.refresh();
    throwIfCancelled(stop);
    static_cast<void>(found(m_history, id));
}

void RecordProcessor::cancel()
{
    if (m_record.isNull())
        return;
    std::stop_source cancellation = m_cancellation; // this object may be destroyed by whom it resumes
    setRecord({});
    cancellation.request_stop();
}

void RecordProcessor::setRecord(const QUuid &id)
{
    if (m_record == id)
        return;
    m_record = id;
    Q_EMIT recordChanged();
}

void RecordProcessor::setError(const QString &text)
{
    if (m_error == text)
        return;
    m_error = text;
    Q_EMIT errorChanged();
}

} // namespace orvane

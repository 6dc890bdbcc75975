#include "ui/presentation/RecordWork.h"

#include "base/Async.h"
#include "base/localization/Localization.h"
#include "correction/TextCorrectionService.h"
#include "processing/RecordProcessor.h"
#include "ui/presentation/Recognition.h"
#include "ui/presentation/Spans.h"

using namespace Qt::StringLiterals;

namespace orvane {

RecordWork::RecordWork(Collaborators collaborators, QObject *parent)
    : QObject(parent),
      m_services(collaborators)
{
    connect(&m_services.processor, &RecordProcessor::recordChanged, this, &RecordWork::busyChanged);
    connect(&m_services.processor, &RecordProcessor::recordChanged, this, &RecordWork::processingChanged);
    connect(&m_services.processor, &RecordProcessor::progressChanged, this, &RecordWork::progressChanged);
    connect(&m_services.corrector, &TextCorrectionService::isCorrectingChanged, this,
            &RecordWork::processingChanged);
    connect(&m_services.corrector, &TextCorrectionService::statusChanged, this,
            &RecordWork::processingChanged);
}

RecordWork::~RecordWork()
{
    m_scope.end();
}

void RecordWork::setRecord(const QUuid &id)
{
    m_record = id;
    Q_EMIT busyChanged();
    Q_EMIT processingChanged();
    Q_EMIT progressChanged();
}

QString RecordWork::processingRefusal() const
{
    const ModelAvailability status = m_services.corrector.status();
    if (!status.isReady)
        return status.message;
    return m_services.corrector.isCorrecting() && !isBusy()
               ? Localization::text(u"Модель занята другим текстом — дождитесь, пока она его обработает.")
               : QString();
}

bool RecordWork::isBusy() const
{
    return !m_record.isNull() && m_services.processor.record() == m_record;
}

QString RecordWork::busyText() const
{
    const QString left = Spans::remaining(m_services.processor.remainingMs());
    return left.isEmpty() ? m_what : m_what + u" · "_s + left;
}

double RecordWork::progress() const
{
    return m_services.processor.progress();
}

void RecordWork::correct()
{
    begin(Localization::text(u"Исправляю…"),
          [id = m_record](RecordProcessor &processor) { return processor.correct(id); });
}

void RecordWork::summarize()
{
    begin(Localization::text(u"Составляю протокол…"),
          [id = m_record](RecordProcessor &processor) { return processor.summarize(id); });
}

void RecordWork::ask(const QString &question)
{
    begin(Localization::text(u"Ищу ответ…"),
          [id = m_record, question](RecordProcessor &processor) { return processor.ask(id, question); });
}

void RecordWork::transcribeAgain()
{
    const auto request = m_services.recognition.request({});
    if (!request)
        return;
    begin(Localization::text(u"Расшифровываю заново…"), [id = m_record, request](RecordProcessor &processor) {
        return processor.transcribeAnew(
            id, {.model = request->model, .language = request->language, .speakers = request->speakers});
    });
}

void RecordWork::begin(const QString &what,
                       const std::function<QCoro::Task<QString>(RecordProcessor &)> &work)
{
    if (!m_services.processor.record().isNull())
        return;
    m_what = what;
    m_errors.remove(m_record);
    spawn(follow(work(m_services.processor)));
    Q_EMIT busyChanged();
    Q_EMIT progressChanged();
}

QCoro::Task<> RecordWork::follow(QCoro::Task<QString> work)
{
    const QUuid id = m_record;
    QString failure;
    try {
        co_await m_scope(std::move(work));
        failure = m_services.processor.error(); // damaged audio
    } catch (const Cancelled &) {
        throw;
    } catch (const std::exception &error) {
        failure = descriptionOf(error);
    }
    if (failure.isEmpty())
        m_errors.remove(id);
    else
        m_errors.insert(id, failure);
    Q_EMIT busyChanged();
}

void RecordWork::cancel()
{
    if (isBusy())
        m_services.processor.cancel();
}

void RecordWork::clearError()
{
    m_errors.remove(m_record);
    Q_EMIT busyChanged();
}

} // namespace orvane

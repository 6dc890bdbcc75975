#include "recognition/TranscriptionService.h"

#include "base/Async.h"
#include "base/localization/Localization.h"

using namespace Qt::StringLiterals;

namespace orvane {

TranscriptionService::TranscriptionService(Collaborators collaborators, QObject *parent)
    : QObject(parent),
      m_engine(collaborators.engine),
      m_pipeline(collaborators.pipeline),
      m_turns(collaborators.turns),
      m_saveRecord(std::move(collaborators.saveRecord))
{
    connect(&m_operation, &Operation::runningChanged, this, &TranscriptionService::isWorkingChanged);
    connect(&m_operation, &Operation::statusChanged, this, &TranscriptionService::statusTextChanged);
    connect(&m_operation, &Operation::progressChanged, this, &TranscriptionService::progressChanged);
    connect(&m_operation, &Operation::errorChanged, this, &TranscriptionService::errorTextChanged);
    connect(&m_detached, &Operation::runningChanged, this, &TranscriptionService::isBusyDetachedChanged);
}

TranscriptionService::~TranscriptionService()
{
    m_scope.end();
}

QCoro::Task<TranscriptionService::Result> TranscriptionService::transcribe(Request request)
{
    if (isWorking())
        throw Error(EngineTurns::waitText());
    const Operation::Work<Result> work = [this, request](Progress progress, std::stop_token stop) {
        return transcribed(request, progress, stop);
    };
    co_return co_await m_scope(m_operation.run(work));
}

QCoro::Task<Transcript> TranscriptionService::transcribeDetached(Request request, std::stop_token stop,
                                                                 Progress progress)
{
    if (m_turns.isTaken())
        throw m_engine.requestFailed(u"движок занят другой расшифровкой"_s);
    const Operation::Work<Transcript> work = [this, request, progress](Progress, std::stop_token cancelled) {
        return recognised(request, progress, cancelled);
    };
    co_return co_await m_scope(m_detached.run(work, stop));
}

QCoro::Task<TranscriptionService::Result>
TranscriptionService::transcribed(Request request, Progress progress, std::stop_token stop)
{
    try {
        Result result;
        result.transcript = co_await m_scope(recognised(request, progress, stop), stop);
        result.savedID = publish(request, result.transcript);
        const QString damage = result.transcript.damageText();
        progress.report(1, std::chrono::milliseconds(0));
        progress.setStatus(
            Localization::text(u"Готово · ") + QString::number(result.transcript.segments.size()) +
            Localization::text(u" сегментов") + (damage.isEmpty() ? damage : u" · "_s + damage));
        co_return result;
    } catch (const Cancelled &) {
        throw;
    } catch (const std::exception &) {
        progress.setStatus(Localization::text(u"Ошибка"));
        throw;
    }
}

QCoro::Task<Transcript> TranscriptionService::recognised(Request request, Progress progress,
                                                         std::stop_token stop)
{
    EngineTurns::Turn turn = m_turns.take();
    if (!turn)
        throw Error(EngineTurns::waitText());
    // Who cancels may begin the next at once, whatever is still on its way to its end.
    const std::stop_callback giveUp(stop, [&turn] { turn.reset(); });
    Transcript transcript = co_await m_scope(m_pipeline.run({.audioPath = request.audioPath,
                                                             .model = request.model,
                                                             .language = request.language,
                                                             .speakers = request.speakers},
                                                            progress, stop),
                                             stop);
    co_return transcript;
}

std::optional<QUuid> TranscriptionService::publish(const Request &request, const Transcript &transcript)
{
    m_segments = transcript.segments;
    m_transcript = joinedText(m_segments);
    Q_EMIT resultChanged();
    if (request.history == History::Skip)
        return std::nullopt;
    const std::optional<QUuid> id = m_saveRecord(request, transcript);
    if (id) {
        m_lastSavedID = *id;
        Q_EMIT lastSavedIDChanged();
    }
    return id;
}

void TranscriptionService::prewarm(const QString &modelPath)
{
    spawnPublished(m_engine.load(modelPath)); // errors only matter to whoever needs the engine
}

void TranscriptionService::cancel()
{
    if (!isWorking())
        return;
    m_operation.setStatus(Localization::text(u"Отменено"));
    m_operation.cancel();
}

void TranscriptionService::reset()
{
    if (isWorking())
        return;
    m_segments.clear();
    m_transcript.clear();
    Q_EMIT resultChanged();
    m_operation.setError({});
    m_operation.setStatus({});
    m_operation.setProgress(0);
    m_resetToken = QUuid::createUuid();
    Q_EMIT resetTokenChanged();
}

} // namespace orvane

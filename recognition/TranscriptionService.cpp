#include "recognition/TranscriptionService.h"

#include "base/AnyStop.h"
#include "base/Async.h"
#include "base/localization/Localization.h"
#include "transcript/TranscriptSanitizer.h"

#include <QFileInfo>
#include <QScopeGuard>
#include <QStringList>

#include <algorithm>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace orvane {

namespace {

constexpr int mostSpeakers = 2;
constexpr int sampleRate = 16000;
constexpr auto estimateInterval = 200ms;
/// How far the bar may go on an estimate alone.
constexpr double mostEstimated = 0.97;

/// Formats that the recognition server reads itself.
bool isDirectFormat(const QString &path)
{
    static const QStringList formats = {u"wav"_s, u"mp3"_s, u"flac"_s, u"ogg"_s};
    return formats.contains(QFileInfo(path).suffix(), Qt::CaseInsensitive);
}

QString recognitionStatus()
{
    return Localization::text(u"Распознавание речи… (первый запуск движка — несколько секунд)");
}

} // namespace

TranscriptionService::TranscriptionService(Collaborators collaborators, QObject *parent)
    : QObject(parent),
      m_engine(collaborators.engine),
      m_decoder(collaborators.decoder),
      m_turns(collaborators.turns),
      m_saveRecord(std::move(collaborators.saveRecord)),
      m_labelSpeakers(std::move(collaborators.labelSpeakers))
{
    m_estimateTimer.setInterval(estimateInterval);
    connect(&m_estimateTimer, &QTimer::timeout, this, &TranscriptionService::updateEstimate);
}

TranscriptionService::~TranscriptionService()
{
    m_lifetime.request_stop();
}

QCoro::Task<> TranscriptionService::transcribe(Request request)
{
    if (m_isWorking)
        co_return;
    const std::stop_token alive = m_lifetime.get_token();
    m_cancellation = std::stop_source();
    const AnyStop either(alive, m_cancellation.get_token());
    EngineTurns::Turn turn = m_turns.take();

    setError({});
    beginProgress();
    setWorking(true);
    QString failure;
    bool cancelled = false;
    try {
        if (!turn)
            throw Error(EngineTurns::waitText());
        const QList<DisplaySegment> segments = co_await run(request, Audience::Published, either.token());
        throwIfCancelled(either.token());
        publish(request, segments);
    } catch (const Cancelled &) {
        cancelled = true;
    } catch (const std::exception &error) {
        failure = QString::fromUtf8(error.what());
    }
    if (alive.stop_requested())
        co_return;

    m_estimateTimer.stop();
    if (cancelled || m_cancellation.stop_requested()) {
        setStatus(Localization::text(u"Отменено"));
    } else if (!failure.isEmpty()) {
        setError(failure);
        setStatus(Localization::text(u"Ошибка"));
    }
    turn.reset();                  // who sees that it ended may begin the next
    m_cancellation.request_stop(); // ends what still looks at the file for the estimate
    setWorking(false);
}

QCoro::Task<QList<DisplaySegment>> TranscriptionService::transcribeDetached(Request request,
                                                                            std::stop_token stop)
{
    EngineTurns::Turn turn = m_turns.take();
    if (!turn)
        throw m_engine.requestFailed(u"движок занят другой расшифровкой"_s);
    const std::stop_token alive = m_lifetime.get_token();
    const auto setBusy = [this](bool busy) {
        m_isBusyDetached = busy;
        Q_EMIT isBusyDetachedChanged();
    };
    setBusy(true);
    const auto free = qScopeGuard([alive, setBusy, &turn] {
        turn.reset();
        if (!alive.stop_requested())
            setBusy(false);
    });
    const AnyStop either(alive, stop);
    co_return co_await run(request, Audience::Nobody, either.token());
}

QCoro::Task<QList<DisplaySegment>> TranscriptionService::run(Request request, Audience audience,
                                                             std::stop_token stop)
{
    const auto check = [decoder = &m_decoder, path = request.audioPath] { decoder->requireReadable(path); };
    co_await offMainThread(check);
    throwIfCancelled(stop);
    const QList<RawSegment> raw = co_await recognise(request, audience, stop);
    throwIfCancelled(stop);
    QList<DisplaySegment> segments =
        TranscriptSanitizer::collapseRepeats(DisplaySegment::from(raw), TranscriptSanitizer::keptRepeats);
    if (request.speakers == SpeakerDetection::On && m_labelSpeakers) {
        segments = co_await m_labelSpeakers(request.audioPath, segments, mostSpeakers, stop);
        throwIfCancelled(stop);
    }
    co_return segments;
}

QCoro::Task<QList<RawSegment>> TranscriptionService::recognise(Request request, Audience audience,
                                                               std::stop_token stop)
{
    if (isDirectFormat(request.audioPath)) {
        try {
            co_return co_await recogniseDirectly(request, audience, stop);
        } catch (const EngineServer::EngineError &error) {
            if (error.kind() != EngineServer::EngineError::Kind::requestRejected)
                throw;
        }
        // A voice message is Opus in .ogg: the server does not read it, we do.
        throwIfCancelled(stop);
    }
    co_return co_await recogniseDecoded(request, audience, stop);
}

QCoro::Task<QList<RawSegment>> TranscriptionService::recogniseDirectly(Request request, Audience audience,
                                                                       std::stop_token stop)
{
    if (audience == Audience::Published) {
        setStatus(recognitionStatus());
        spawn(estimateFromFile(request, stop));
    }
    co_await m_engine.load(request.model.path);
    throwIfCancelled(stop);
    const QElapsedTimer time = startRecognition(audience);
    const QList<RawSegment> segments = co_await m_engine.infer(request.audioPath, request.language);
    throwIfCancelled(stop);
    if (audience == Audience::Published && m_audioLength)
        m_estimate.learn(request.model.path, *m_audioLength, 1ms * time.elapsed());
    co_return segments;
}

QCoro::Task<QList<RawSegment>> TranscriptionService::recogniseDecoded(Request request, Audience audience,
                                                                      std::stop_token stop)
{
    if (audience == Audience::Published) {
        setStatus(Localization::text(u"Декодирование аудио…"));
        beginProgress();
    }
    auto decode = [decoder = &m_decoder, path = request.audioPath, stop] {
        return decoder->decode(path, stop);
    };
    std::vector<float> samples = co_await offMainThread(std::move(decode));
    throwIfCancelled(stop);

    const auto length = 1ms * (qint64(samples.size()) * 1000 / sampleRate);
    if (audience == Audience::Published)
        setStatus(recognitionStatus());
    co_await m_engine.load(request.model.path);
    throwIfCancelled(stop);
    const QElapsedTimer time = startRecognition(audience);
    if (audience == Audience::Published)
        beginEstimate(request.model.path, length);
    const QList<RawSegment> segments =
        co_await m_engine.transcribe(std::move(samples), request.model.path, request.language);
    throwIfCancelled(stop);
    m_estimate.learn(request.model.path, length, 1ms * time.elapsed());
    co_return segments;
}

void TranscriptionService::publish(const Request &request, const QList<DisplaySegment> &segments)
{
    m_segments = segments;
    m_transcript = joinedText(segments);
    Q_EMIT resultChanged();
    if (request.history == History::Save) {
        if (const std::optional<QUuid> id = m_saveRecord(request, segments, m_transcript)) {
            m_lastSavedID = *id;
            Q_EMIT lastSavedIDChanged();
        }
    }
    setProgress(1, 0);
    setStatus(Localization::text(u"Готово · ") + QString::number(segments.size()) +
              Localization::text(u" сегментов"));
}

void TranscriptionService::prewarm(const QString &modelPath)
{
    // Errors only matter to whoever needs the engine.
    static const auto load = [](WhisperServerEngine *engine, QString path) -> QCoro::Task<> {
        try {
            co_await engine->load(path);
        } catch (const Error &) {
            co_return;
        }
    };
    spawn(load(&m_engine, modelPath));
}

void TranscriptionService::cancel()
{
    if (!m_isWorking)
        return;
    m_cancellation.request_stop();
    m_estimateTimer.stop();
    setStatus(Localization::text(u"Отменено"));
}

void TranscriptionService::reset()
{
    if (m_isWorking)
        return;
    m_segments.clear();
    m_transcript.clear();
    Q_EMIT resultChanged();
    setError({});
    setStatus({});
    setProgress(0, -1);
    m_resetToken = QUuid::createUuid();
    Q_EMIT resetTokenChanged();
}

QCoro::Task<> TranscriptionService::estimateFromFile(Request request, std::stop_token stop)
{
    auto probe = [decoder = &m_decoder, path = request.audioPath, stop] {
        return decoder->duration(path, stop);
    };
    const std::optional<std::chrono::milliseconds> length = co_await offMainThread(std::move(probe));
    throwIfCancelled(stop);
    if (length)
        beginEstimate(request.model.path, *length);
}

void TranscriptionService::beginProgress()
{
    m_estimateTimer.stop();
    m_recognitionTime.invalidate();
    m_audioLength.reset();
    setProgress(0, -1);
}

QElapsedTimer TranscriptionService::startRecognition(Audience audience)
{
    QElapsedTimer time;
    time.start();
    if (audience == Audience::Published)
        m_recognitionTime = time;
    return time;
}

void TranscriptionService::beginEstimate(const QString &modelPath, std::chrono::milliseconds audio)
{
    m_audioLength = audio;
    m_expected = m_estimate.expected(modelPath, audio);
    m_estimateTimer.start();
    updateEstimate();
}

void TranscriptionService::updateEstimate()
{
    // Before the engine is loaded nothing has been recognised yet.
    const std::chrono::milliseconds elapsed(m_recognitionTime.isValid() ? m_recognitionTime.elapsed() : 0);
    const double fraction = std::chrono::duration<double>(elapsed) / std::max(m_expected, 1ms);
    const bool overdue = elapsed > m_expected;
    setProgress(std::min(fraction, mostEstimated), overdue ? -1 : (m_expected - elapsed).count());
}

void TranscriptionService::setWorking(bool working)
{
    m_isWorking = working;
    Q_EMIT isWorkingChanged();
}

void TranscriptionService::setStatus(const QString &text)
{
    if (m_statusText == text)
        return;
    m_statusText = text;
    Q_EMIT statusTextChanged();
}

void TranscriptionService::setError(const QString &text)
{
    if (m_errorText == text)
        return;
    m_errorText = text;
    Q_EMIT errorTextChanged();
}

void TranscriptionService::setProgress(double progress, qint64 remainingMs)
{
    if (m_progress == progress && m_remainingMs == remainingMs)
        return;
    m_progress = progress;
    m_remainingMs = remainingMs;
    Q_EMIT progressChanged();
}

} // namespace orvane

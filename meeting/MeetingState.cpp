#include "meeting/MeetingState.h"

#include "base/localization/Localization.h"

#include <utility>

namespace orvane {

MeetingState::MeetingState(QObject *parent) : QObject(parent)
{
    connect(&m_operation, &Operation::runningChanged, this, &MeetingState::stateChanged);
    connect(&m_operation, &Operation::progressChanged, this, &MeetingState::progressChanged);
    connect(&m_operation, &Operation::statusChanged, this, &MeetingState::statusTextChanged);
    connect(&m_operation, &Operation::errorChanged, this, &MeetingState::errorTextChanged);
}

QString MeetingState::stopRefusal() const
{
    return isRunning() ? QString() : Localization::text(u"Запись совещания не идёт.");
}

QString MeetingState::cancelRefusal() const
{
    if (isTranscribing())
        return {};
    return isRunning() ? Localization::text(u"Идёт запись: её завершает команда orvane meeting stop.")
                       : Localization::text(u"Расшифровка совещания не идёт.");
}

QString MeetingState::transcript() const
{
    QString text;
    for (const DisplaySegment &segment : m_segments)
        text += segment.text;
    return text;
}

void MeetingState::setStage(Stage stage)
{
    if (std::exchange(m_stage, stage) != stage)
        Q_EMIT stateChanged();
}

void MeetingState::setElapsed(qint64 milliseconds)
{
    const double seconds = static_cast<double>(milliseconds) / 1000;
    if (std::exchange(m_elapsed, seconds) != seconds)
        Q_EMIT elapsedChanged();
}

void MeetingState::showResult(const QList<DisplaySegment> &segments, const QUuid &recordID,
                              const QString &damage)
{
    setResult(segments, recordID);
    const QString status =
        recordID.isNull() ? Localization::text(u"Готово · речь не распознана (запись сохранена)")
                          : Localization::text(u"Совещание сохранено · ") + QString::number(segments.size()) +
                                Localization::text(u" сегментов · аудио в истории");
    m_operation.setStatus(damage.isEmpty() ? status : status + QStringLiteral(" · ") + damage);
}

void MeetingState::setResult(const QList<DisplaySegment> &segments, const QUuid &recordID)
{
    m_segments = segments;
    m_lastRecordID = recordID;
    Q_EMIT resultChanged();
}

void MeetingState::setOutcome(Outcome outcome)
{
    if (std::exchange(m_outcome, outcome) != outcome)
        Q_EMIT outcomeChanged();
}

void MeetingState::clearResult()
{
    setOutcome(Outcome::None);
    setResult({}, {});
    m_operation.setError({});
    setElapsed(0);
}

} // namespace orvane

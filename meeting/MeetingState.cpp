#include "meeting/MeetingState.h"

#include <utility>

namespace orvane {

QString MeetingState::transcript() const
{
    QString text;
    for (const DisplaySegment &segment : m_segments)
        text += segment.text;
    return text;
}

void MeetingState::setPhase(Phase phase)
{
    if (std::exchange(m_phase, phase) != phase)
        Q_EMIT stateChanged();
}

void MeetingState::setElapsed(double seconds)
{
    if (std::exchange(m_elapsed, seconds) != seconds)
        Q_EMIT elapsedChanged();
}

void MeetingState::setStatus(const QString &text)
{
    if (std::exchange(m_statusText, text) != text)
        Q_EMIT statusTextChanged();
}

void MeetingState::setError(const QString &text)
{
    if (std::exchange(m_errorText, text) != text)
        Q_EMIT errorTextChanged();
}

void MeetingState::setResult(const QList<DisplaySegment> &segments, const QUuid &recordID)
{
    m_segments = segments;
    m_lastRecordID = recordID;
    Q_EMIT resultChanged();
}

void MeetingState::clearResult()
{
    setResult({}, {});
    setError({});
    setElapsed(0);
}

} // namespace orvane

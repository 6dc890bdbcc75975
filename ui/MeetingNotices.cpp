#include "ui/MeetingNotices.h"

#include "meeting/MeetingTranscriber.h"

#include <QStringList>

#include <utility>

namespace orvane {

MeetingNotices::MeetingNotices(const MeetingTranscriber &meeting) : m_meeting(meeting)
{
    m_soon.setSingleShot(true);
    m_soon.setInterval(0);
    m_soon.callOnTimeout(this, &MeetingNotices::look);
    const auto lookSoon = [this] { m_soon.start(); };
    connect(&meeting, &MeetingTranscriber::stateChanged, this, lookSoon);
    connect(&meeting, &MeetingTranscriber::errorTextChanged, this, lookSoon);
    connect(&meeting, &MeetingTranscriber::outcomeChanged, this, [this] {
        if (m_meeting.outcome() != MeetingTranscriber::Outcome::NotStarted)
            return;
        m_knownError.clear(); // the same reason as the last time is news
        m_soon.start();
    });
}

void MeetingNotices::look()
{
    QStringList lines;
    const bool isActive = m_meeting.isRunning() || m_meeting.isTranscribing();
    if (std::exchange(m_wasActive, isActive) && !isActive)
        lines << m_meeting.statusText();
    const QString error = m_meeting.errorText();
    if (std::exchange(m_knownError, error) != error)
        lines << error;
    lines.removeAll(QString());
    if (!lines.isEmpty())
        Q_EMIT notice(lines.join(u'\n'));
}

} // namespace orvane

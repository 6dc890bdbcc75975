#pragma once

#include <QObject>
#include <QString>

class QMenu;

namespace orvane {

class MeetingTranscriber;

/// The meeting's entries in the program's menu.
class MeetingMenu : public QObject
{
    Q_OBJECT

public:
    /// `meeting` outlives this.
    explicit MeetingMenu(MeetingTranscriber &meeting) : m_meeting(meeting) {}

    /// What can be done with a meeting at the moment.
    void addTo(QMenu &menu);

Q_SIGNALS:
    /// Why what was chosen cannot begin now, one sentence in the interface language.
    void refused(const QString &reason);

private:
    void addRecording(QMenu &menu);
    void addLeftovers(QMenu &menu);
    void transcribe(const QString &audioFileName);

    MeetingTranscriber &m_meeting;
};

} // namespace orvane

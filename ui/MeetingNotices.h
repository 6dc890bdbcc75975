#pragma once

#include <QObject>
#include <QString>
#include <QTimer>

namespace orvane {

class MeetingTranscriber;

/// What a meeting says when nobody looks: how it ended, and what went wrong as soon as it has. Main thread.
class MeetingNotices : public QObject
{
    Q_OBJECT

public:
    /// `meeting` outlives this.
    explicit MeetingNotices(const MeetingTranscriber &meeting);

Q_SIGNALS:
    /// In the interface language.
    void notice(const QString &text);

private:
    void look();

    const MeetingTranscriber &m_meeting;
    bool m_wasActive = false;
    QString m_knownError;
    QTimer m_soon; // what changes together is reported once
};

} // namespace orvane

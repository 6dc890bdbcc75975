#include "ui/MeetingMenu.h"

#include "base/Async.h"
#include "base/localization/Localization.h"
#include "meeting/MeetingTranscriber.h"
#include "ui/MenuEntries.h"

using namespace Qt::StringLiterals;

namespace orvane {

void MeetingMenu::addTo(QMenu &menu)
{
    addRecording(menu);
    addLeftovers(menu);
}

void MeetingMenu::addRecording(QMenu &menu)
{
    if (m_meeting.isRunning()) {
        menu.addAction(Localization::text(u"Завершить запись совещания"), &m_meeting,
                       &MeetingTranscriber::stop);
    } else if (m_meeting.isTranscribing()) {
        menu.addAction(Localization::text(u"Прервать расшифровку — аудиозапись совещания останется на диске"),
                       &m_meeting, &MeetingTranscriber::cancelTranscription);
    } else {
        QAction *start = menu.addAction(Localization::text(u"Начать запись совещания"), &m_meeting,
                                        [meeting = &m_meeting] { spawn(meeting->start()); });
        start->setEnabled(m_meeting.canStart());
    }
}

void MeetingMenu::addLeftovers(QMenu &menu)
{
    if (m_meeting.leftovers().isEmpty())
        return;
    QMenu *leftovers = menu.addMenu(Localization::text(u"Нерасшифрованные записи"));
    for (const RecordedMeeting &leftover : m_meeting.leftovers()) {
        QMenu *actions = leftovers->addMenu(MenuEntries::asShown(meetingTitle(leftover.startedAt) + u" · "_s +
                                                                 timecodeOf(leftover.durationMs)));
        const QString name = leftover.audioFileName;
        actions->addAction(Localization::text(u"Расшифровать"), this, [this, name] { transcribe(name); });
        actions->addAction(Localization::text(u"Больше не предлагать"), &m_meeting,
                           [meeting = &m_meeting, name] { meeting->dismissLeftover(name); });
    }
}

void MeetingMenu::transcribe(const QString &audioFileName)
{
    if (const QString reason = m_meeting.leftoverRefusal(); !reason.isEmpty())
        Q_EMIT refused(reason);
    else
        m_meeting.transcribeLeftover(audioFileName);
}

} // namespace orvane

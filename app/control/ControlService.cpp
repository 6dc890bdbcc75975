#include "app/control/ControlService.h"

#include "app/control/ApplicationAdaptor.h"
#include "app/control/ControlInterface.h"
#include "base/Async.h"
#include "base/localization/Localization.h"
#include "dictation/DictationController.h"
#include "meeting/MeetingTranscriber.h"

#include <QDBusConnection>
#include <QPointer>
#include <QStringList>

using namespace Qt::StringLiterals;

namespace orvane {

using State = DictationState;

ControlService::ControlService(DictationController *dictation, MeetingTranscriber &meeting, QObject *parent)
    : QObject(parent),
      m_dictation(dictation),
      m_meeting(meeting)
{
    const auto *application = new ApplicationAdaptor(this);
    connect(application, &ApplicationAdaptor::activated, this, &ControlService::activated);
}

void ControlService::publish()
{
    QDBusConnection::sessionBus().registerObject(ControlInterface::path, this,
                                                 QDBusConnection::ExportScriptableSlots |
                                                     QDBusConnection::ExportAdaptors);
}

void ControlService::Toggle()
{
    if (!hasDictation())
        return;
    const State state = m_dictation->state();
    if (state != State::Idle && state != State::Recording)
        refuse(Localization::text(u"Предыдущая диктовка ещё обрабатывается."));
    else
        m_dictation->toggle();
}

void ControlService::Start()
{
    if (!hasDictation())
        return;
    if (m_dictation->state() != State::Idle)
        refuse(Localization::text(u"Диктовка уже идёт."));
    else
        m_dictation->start();
}

void ControlService::Stop()
{
    if (!hasDictation())
        return;
    if (m_dictation->state() != State::Recording)
        refuse(Localization::text(u"Диктовка сейчас не записывается."));
    else
        m_dictation->stop();
}

void ControlService::Cancel()
{
    if (!hasDictation())
        return;
    if (!m_dictation->interceptsEscape()) // one that is about to begin cannot be taken back either
        refuse(Localization::text(u"Отменять нечего: диктовка не идёт."));
    else
        m_dictation->cancel();
}

QString ControlService::Status()
{
    if (!hasDictation())
        return {};
    switch (m_dictation->state()) {
    case State::Idle:
        return u"idle"_s;
    case State::Starting:
        return u"starting"_s;
    case State::Recording:
        return u"recording"_s;
    case State::Transcribing:
        return u"transcribing"_s;
    case State::Correcting:
        return u"correcting"_s;
    }
    Q_UNREACHABLE();
}

void ControlService::StartMeeting()
{
    if (refuse(m_meeting.startRefusal()))
        return;
    setDelayedReply(true);
    spawn(startMeeting(&m_meeting, message()));
}

QCoro::Task<> ControlService::startMeeting(MeetingTranscriber *meeting, QDBusMessage request)
{
    const QPointer<MeetingTranscriber> alive(meeting);
    co_await meeting->start();
    if (!alive)
        co_return;
    const QString problem = meeting->isRunning() ? QString() : meeting->errorText();
    QDBusConnection::sessionBus().send(problem.isEmpty()
                                           ? request.createReply()
                                           : request.createErrorReply(ControlInterface::refusal, problem));
}

void ControlService::StopMeeting()
{
    if (!refuse(m_meeting.stopRefusal()))
        m_meeting.stop();
}

void ControlService::CancelMeeting()
{
    if (!refuse(m_meeting.cancelRefusal()))
        m_meeting.cancelTranscription();
}

QString ControlService::MeetingStatus()
{
    QStringList lines = {m_meeting.isRunning()        ? u"recording"_s
                         : m_meeting.isTranscribing() ? u"transcribing"_s
                                                      : u"idle"_s,
                         m_meeting.statusText(), m_meeting.errorText(), m_meeting.leftoverNotice()};
    lines.removeAll(QString());
    return lines.join(u'\n');
}

void ControlService::TranscribeMeeting()
{
    if (!refuse(m_meeting.leftoverRefusal()))
        m_meeting.transcribeLeftover(m_meeting.leftovers().constFirst().audioFileName);
}

void ControlService::DismissMeeting()
{
    if (m_meeting.leftovers().isEmpty())
        refuse(Localization::text(u"Нерасшифрованных записей нет."));
    else
        m_meeting.dismissLeftover(m_meeting.leftovers().constFirst().audioFileName);
}

void ControlService::Quit()
{
    Q_EMIT quitRequested();
}

bool ControlService::hasDictation()
{
    if (!m_dictation)
        refuse(Localization::text(u"Orvane работает без экрана, диктовать здесь некуда."));
    return m_dictation != nullptr;
}

bool ControlService::refuse(const QString &text)
{
    if (!text.isEmpty())
        sendErrorReply(ControlInterface::refusal, text);
    return !text.isEmpty();
}

} // namespace orvane

#include "app/control/ControlService.h"

#include "app/control/ApplicationAdaptor.h"
#include "app/control/ControlInterface.h"
#include "base/Async.h"
#include "base/Error.h"
#include "base/localization/Localization.h"
#include "dictation/DictationController.h"
#include "meeting/MeetingTranscriber.h"

#include <QDBusConnection>
#include <QStringList>

using namespace Qt::StringLiterals;

namespace orvane {

using State = DictationState;

ControlService::ControlService(QObject *parent) : QObject(parent)
{
    const auto *application = new ApplicationAdaptor(this);
    connect(application, &ApplicationAdaptor::activated, this, &ControlService::activated);
    connect(application, &ApplicationAdaptor::actionActivated, this, &ControlService::actionActivated);
}

ControlService::~ControlService()
{
    m_scope.end();
}

void ControlService::serve(DictationController *dictation, MeetingTranscriber &meeting)
{
    m_dictation = dictation;
    m_meeting = &meeting;
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
    switch (m_dictation->state()) {
    case State::Idle:
        beginDictation();
        break;
    case State::Recording:
        m_dictation->stop();
        break;
    case State::Starting:
    case State::Transcribing:
    case State::Correcting:
        refuse(Localization::text(u"Предыдущая диктовка ещё обрабатывается."));
    }
}

void ControlService::Tap()
{
    if (hasDictation())
        Q_EMIT tapped();
}

void ControlService::Start()
{
    if (!hasDictation())
        return;
    if (m_dictation->state() != State::Idle)
        refuse(Localization::text(u"Диктовка уже идёт."));
    else
        beginDictation();
}

void ControlService::beginDictation()
{
    setDelayedReply(true);
    spawn(startDictation(message()));
}

QCoro::Task<> ControlService::startDictation(QDBusMessage request)
{
    QString problem;
    try {
        co_await m_scope(m_dictation->begin());
    } catch (const Gone &) {
        throw;
    } catch (const Cancelled &) {
        problem = Localization::text(u"Диктовка не началась.");
    } catch (const std::exception &error) {
        problem = descriptionOf(error);
    }
    answer(request, problem);
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
    if (refuse(m_meeting->startRefusal()))
        return;
    setDelayedReply(true);
    spawn(startMeeting(message()));
}

QCoro::Task<> ControlService::startMeeting(QDBusMessage request)
{
    co_await m_scope(m_meeting->start());
    const QString problem = m_meeting->isRunning() ? QString() : m_meeting->errorText();
    answer(request, problem);
}

void ControlService::StopMeeting()
{
    if (!refuse(m_meeting->stopRefusal()))
        m_meeting->stop();
}

void ControlService::CancelMeeting()
{
    if (!refuse(m_meeting->cancelRefusal()))
        m_meeting->cancelTranscription();
}

QString ControlService::MeetingStatus()
{
    QStringList lines = {m_meeting->isRunning()        ? u"recording"_s
                         : m_meeting->isTranscribing() ? u"transcribing"_s
                                                       : u"idle"_s,
                         m_meeting->statusText(), m_meeting->errorText(), m_meeting->leftoverNotice()};
    lines.removeAll(QString());
    return lines.join(u'\n');
}

void ControlService::TranscribeMeeting()
{
    if (!refuse(m_meeting->leftoverRefusal()))
        m_meeting->transcribeLeftover(m_meeting->leftovers().constFirst().audioFileName);
}

void ControlService::DismissMeeting()
{
    if (m_meeting->leftovers().isEmpty()) {
        refuse(Localization::text(u"Нерасшифрованных записей нет."));
        return;
    }
    const qsizetype before = m_meeting->leftovers().size();
    m_meeting->dismissLeftover(m_meeting->leftovers().constFirst().audioFileName);
    if (m_meeting->leftovers().size() == before)
        refuse(Localization::text(u"Эта запись сейчас расшифровывается."));
}

void ControlService::Quit()
{
    Q_EMIT quitRequested();
}

void ControlService::answer(const QDBusMessage &request, const QString &problem)
{
    QDBusConnection::sessionBus().send(problem.isEmpty()
                                           ? request.createReply()
                                           : request.createErrorReply(ControlInterface::refusal, problem));
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

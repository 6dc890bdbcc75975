#include "app/control/ControlService.h"

#include "app/control/ApplicationAdaptor.h"
#include "app/control/ControlInterface.h"
#include "app/settings/Localization.h"
#include "dictation/DictationController.h"

#include <QDBusConnection>

using namespace Qt::StringLiterals;

namespace orvane {

using State = DictationState;

ControlService::ControlService(DictationController *dictation, QObject *parent)
    : QObject(parent),
      m_dictation(dictation)
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
        refuse(Localization::text(u"Предыдущая диктовка ещё обрабатывается."_s));
    else
        m_dictation->toggle();
}

void ControlService::Start()
{
    if (!hasDictation())
        return;
    if (m_dictation->state() != State::Idle)
        refuse(Localization::text(u"Диктовка уже идёт."_s));
    else
        m_dictation->start();
}

void ControlService::Stop()
{
    if (!hasDictation())
        return;
    if (m_dictation->state() != State::Recording)
        refuse(Localization::text(u"Диктовка сейчас не записывается."_s));
    else
        m_dictation->stop();
}

void ControlService::Cancel()
{
    if (!hasDictation())
        return;
    if (m_dictation->state() == State::Idle)
        refuse(Localization::text(u"Отменять нечего: диктовка не идёт."_s));
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

void ControlService::Quit()
{
    Q_EMIT quitRequested();
}

bool ControlService::hasDictation()
{
    if (!m_dictation)
        refuse(Localization::text(u"Orvane работает без экрана, диктовать здесь некуда."_s));
    return m_dictation != nullptr;
}

void ControlService::refuse(const QString &text)
{
    sendErrorReply(ControlInterface::refusal, text);
}

} // namespace orvane

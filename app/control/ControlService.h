#pragma once

#include "base/Scope.h"

#include <QDBusContext>
#include <QDBusMessage>
#include <QObject>
#include <QString>

#include <QCoroTask>

namespace orvane {

class DictationController;
class MeetingTranscriber;

/// What the running application offers on the session bus to the command line, and so to every desktop that
/// can bind a key to a command. A request that makes no sense at the moment is answered with an error
/// whose text is for the user. Main thread.
class ControlService : public QObject, protected QDBusContext
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "com.orvane.Orvane1")

public:
    explicit ControlService(QObject *parent = nullptr);
    ~ControlService() override;

    /// Takes requests from now on; without a session bus there are none. They are answered by the event loop,
    /// which must not run before serve(): so none is lost while the program starts.
    void publish();

    /// What the requests are about. `dictation` is null in an application without a display. Both outlive the
    /// event loop.
    void serve(DictationController *dictation, MeetingTranscriber &meeting);

public Q_SLOTS:
    /// Answered, like Start, when it is known whether a recording that was to begin has begun.
    Q_SCRIPTABLE void Toggle();
    /// The trigger key was pressed and let go, on a desktop that lets the user bind it to a command. Answered
    /// at once, whether or not it begins something.
    Q_SCRIPTABLE void Tap();
    Q_SCRIPTABLE void Start();
    Q_SCRIPTABLE void Stop();
    Q_SCRIPTABLE void Cancel();
    /// "idle", "starting", "recording", "transcribing" or "correcting".
    Q_SCRIPTABLE QString Status();
    /// Answered when the recording runs.
    Q_SCRIPTABLE void StartMeeting();
    Q_SCRIPTABLE void StopMeeting();
    Q_SCRIPTABLE void CancelMeeting();
    /// "idle", "recording" or "transcribing"; what is shown of it follows, a line each.
    Q_SCRIPTABLE QString MeetingStatus();
    /// Begins with the first recording that an earlier run left behind.
    Q_SCRIPTABLE void TranscribeMeeting();
    /// Does not offer that recording any more; its audio stays.
    Q_SCRIPTABLE void DismissMeeting();
    Q_SCRIPTABLE void Quit();

Q_SIGNALS:
    void quitRequested();
    void tapped();
    /// Somebody started the program again, or opened files with it, by their URLs. The token is the right to
    /// come forward; empty where the desktop gives none.
    void activated(const QStringList &addresses, const QString &token);
    /// One of the actions in the program's desktop file.
    void actionActivated(const QString &name, const QString &token);

private:
    /// False when there is none, which is then the answer.
    bool hasDictation();
    /// Answers with that text unless it is empty; whether it did.
    bool refuse(const QString &text);
    void beginDictation();
    QCoro::Task<> startDictation(QDBusMessage request);
    QCoro::Task<> startMeeting(QDBusMessage request);
    /// With the problem, unless it is empty.
    static void answer(const QDBusMessage &request, const QString &problem);

    DictationController *m_dictation = nullptr;
    MeetingTranscriber *m_meeting = nullptr;
    Scope m_scope;
};

} // namespace orvane

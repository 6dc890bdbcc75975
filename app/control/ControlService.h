#pragma once

#include <QDBusContext>
#include <QObject>
#include <QString>

namespace orvane {

class DictationController;

/// What the running application offers on the session bus to the command line, and so to every desktop that
/// can bind a key to a command. A request that makes no sense at the moment is answered with an error
/// whose text is for the user. Main thread.
class ControlService : public QObject, protected QDBusContext
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "com.orvane.Orvane1")

public:
    /// `dictation` is null in an application without a display.
    explicit ControlService(DictationController *dictation, QObject *parent = nullptr);

    /// Takes requests from now on. Without a session bus there are none.
    void publish();

public Q_SLOTS:
    Q_SCRIPTABLE void Toggle();
    Q_SCRIPTABLE void Start();
    Q_SCRIPTABLE void Stop();
    Q_SCRIPTABLE void Cancel();
    /// "idle", "starting", "recording", "transcribing" or "correcting".
    Q_SCRIPTABLE QString Status();
    Q_SCRIPTABLE void Quit();

Q_SIGNALS:
    void quitRequested();
    /// Somebody started the program again.
    void activated();

private:
    /// False when there is none, which is then the answer.
    bool hasDictation();
    void refuse(const QString &text);

    DictationController *m_dictation;
};

} // namespace orvane

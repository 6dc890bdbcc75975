#pragma once

#include "audio/AudioRecorder.h"
#include "base/Scope.h"

#include <QList>
#include <QObject>

#include <stop_token>

namespace orvane {

/// The microphone while a page lets the user try it. Nothing that it hears is kept. Main thread.
class ListeningMicrophone : public QObject
{
    Q_OBJECT
    Q_PROPERTY(QList<float> waveform READ waveform NOTIFY levelChanged)
    Q_PROPERTY(bool hasHeard READ hasHeard NOTIFY changed)
    Q_PROPERTY(QString text READ text NOTIFY changed)

public:
    /// The module that records lies in that folder.
    explicit ListeningMicrophone(const QString &moduleFolder, QObject *parent = nullptr);
    ~ListeningMicrophone() override;

    /// See AudioRecorder.
    [[nodiscard]] QList<float> waveform() const { return m_recorder.waveform(); }
    /// Somebody has spoken since it was made.
    [[nodiscard]] bool hasHeard() const { return m_hasHeard; }
    /// What to do, or why nothing can be heard and what to do about that.
    [[nodiscard]] QString text() const;

    /// Asks for permission where the desktop wants that. A problem becomes the text.
    Q_INVOKABLE void listen();
    Q_INVOKABLE void end();

Q_SIGNALS:
    void levelChanged();
    void changed();

private:
    QCoro::Task<> open(std::stop_token stop);
    void takeLevel();
    void setProblem(const QString &text);

    AudioRecorder m_recorder;
    bool m_hasHeard = false;
    QString m_problem;
    std::stop_source m_listening;
    Scope m_scope;
};

} // namespace orvane

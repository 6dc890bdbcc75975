#pragma once

#include "audio/AudioRecorder.h"
#include "base/Scope.h"
#include "diagnostics/CheckResult.h"

#include <QObject>

#include <QCoroTask>

#include <chrono>
#include <stop_token>

namespace orvane {

/// Listens to the microphone for a while: whether it opens, and whether anything but silence comes. Main
/// thread.
class MicrophoneCheck : public QObject
{
    Q_OBJECT

public:
    /// The module that records lies in `moduleFolder`.
    MicrophoneCheck(const QString &moduleFolder, std::chrono::milliseconds listeningTime);
    ~MicrophoneCheck() override;

    /// One at a time.
    [[nodiscard]] QCoro::Task<CheckResult> run(std::stop_token stop);

    [[nodiscard]] bool isListening() const { return m_recorder.isRunning(); }
    /// See AudioRecorder.
    [[nodiscard]] QList<float> waveform() const { return m_recorder.waveform(); }

Q_SIGNALS:
    /// Also when it begins and ends to listen.
    void levelChanged();

private:
    [[nodiscard]] QCoro::Task<CheckResult> listen(std::stop_token stop);

    const QString m_moduleFolder;
    const std::chrono::milliseconds m_listeningTime;
    AudioRecorder m_recorder;
    Scope m_scope;
};

} // namespace orvane

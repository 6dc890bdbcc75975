#pragma once

#include "audio/LevelMeter.h"
#include "audio/capture/CaptureModule.h"
#include "base/Scope.h"

#include <QList>
#include <QObject>
#include <QThreadPool>
#include <QTimer>

#include <QCoroTask>

#include <functional>
#include <memory>
#include <vector>

namespace orvane {

class CapturedSamples;
class CaptureSession;

/// Records the default microphone, and whatever becomes the default while it records: what was recorded
/// stays, the time between two devices is left out. Lives on the main thread; the device is opened and read
/// on a thread of its own, with a module that is loaded by the first recording.
class AudioRecorder : public QObject
{
    Q_OBJECT
    Q_PROPERTY(float level READ level NOTIFY levelChanged)
    Q_PROPERTY(QList<float> waveform READ waveform NOTIFY levelChanged)
    Q_PROPERTY(bool deviceIsSilent READ deviceIsSilent NOTIFY deviceIsSilentChanged)

public:
    static constexpr int waveformSize = LevelMeter::waveformSize;

    /// Called on the audio thread, or by flushChunk(). May be called once more while setChunks() replaces it.
    /// Must not throw or take long.
    using ChunkHandler = std::function<void(std::vector<float>)>;

    /// The module "orvane-capture" lies in that folder.
    explicit AudioRecorder(const QString &moduleFolder, QObject *parent = nullptr);
    /// Drops what is being recorded.
    ~AudioRecorder() override;

    /// Begins to record and resumes when the device runs; what it gives from then on is recorded. Throws
    /// CaptureError, and Cancelled when stop() comes first. While it records or begins to, a second start
    /// begins nothing and resumes with the first.
    [[nodiscard]] QCoro::Task<> start();

    /// Ends it and resumes with the samples in −1…1 since start(), including those that the device held
    /// back; none when they went into chunks or nothing was being recorded. Of a recording that ended by
    /// itself, what was recorded until then. May be followed by start() at once.
    [[nodiscard]] QCoro::Task<std::vector<float>> stop();

    /// Ends it at once and forgets its samples: the next start() need not wait for them.
    void discard();

    /// What is recorded so far, but for so many samples at its beginning, and at most so many; none when they
    /// go into chunks or nothing is being recorded. levelChanged() says when there are more.
    [[nodiscard]] std::vector<float> samplesAfter(size_t first, size_t count) const;

    /// From the next samples on: hands out what is recorded in chunks of at least so many seconds. 0 and {}
    /// for stop() to return it, as at first.
    void setChunks(double seconds, ChunkHandler handler);

    /// Hands what is recorded so far and was in no chunk yet to the handler, in its order with all other
    /// chunks, before this returns.
    void flushChunk();

    /// From the resuming of start() to the end of the recording.
    [[nodiscard]] bool isRunning() const { return m_isRunning; }
    /// What the indicator shows, 0…1; 0 when not running.
    [[nodiscard]] float level() const { return m_waveform.constLast(); }
    /// The last levels, one for each 85 ms, always waveformSize of them with the newest last.
    [[nodiscard]] QList<float> waveform() const { return m_waveform; }
    /// For 2 s of a recording there has been nothing but digital zeros, or nothing at all.
    [[nodiscard]] bool deviceIsSilent() const { return m_deviceIsSilent; }

Q_SIGNALS:
    /// The recording cannot go on, for a reason in the interface language. stop() gives what there is.
    void endedByItself(const QString &reason);
    void levelChanged();
    void deviceIsSilentChanged();

private:
    struct Recording;

    [[nodiscard]] QCoro::Task<> record(std::shared_ptr<Recording> recording);
    void takeNews();
    void checkSilence();
    void setDeviceIsSilent(bool silent);
    std::shared_ptr<Recording> letGo(CaptureRest rest);
    void showNothing();

    const QString m_moduleFile;
    const std::shared_ptr<CapturedSamples> m_samples;
    std::shared_ptr<Recording> m_recording; // from start() to stop(), or to its failure to start
    bool m_isRunning = false;
    bool m_deviceIsSilent = false;
    QList<float> m_waveform;
    QTimer m_silenceCheck;
    Scope m_scope;
    QThreadPool m_audioThread; // one: a recording begins when the one before it has ended
};

} // namespace orvane

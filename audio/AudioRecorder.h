#pragma once

#include "base/Error.h"

#include <QList>
#include <QObject>
#include <QThreadPool>
#include <QTimer>

#include <QCoroTask>

#include <functional>
#include <memory>
#include <stop_token>
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
    static constexpr int sampleRate = 16'000;
    static constexpr int waveformSize = 48;

    class CaptureError : public Error
    {
    public:
        enum class Kind { noInputDevice, deviceFailed };

        [[nodiscard]] static CaptureError noInputDevice();
        /// The description tells what failed and what to do, a text in the interface language.
        [[nodiscard]] static CaptureError deviceFailed(const QString &description);

        [[nodiscard]] Kind kind() const { return m_kind; }

    private:
        CaptureError(Kind kind, const QString &description) : Error(description), m_kind(kind) {}

        Kind m_kind;
    };

    /// Called on the audio thread. May be called once more while setChunks() replaces it. Must not throw.
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
    /// back; none when they went into chunks or nothing was being recorded. May be followed by start() at
    /// once.
    [[nodiscard]] QCoro::Task<std::vector<float>> stop();

    /// From the next samples on: hands out what is recorded in chunks of at least so many seconds, or,
    /// without a handler, keeps it for drainPendingChunk(). 0 and {} for stop() to return it, as at first.
    void setChunks(double seconds, ChunkHandler handler);

    /// What no chunk has held yet, up to the last samples once stop() has resumed; empties it.
    [[nodiscard]] std::vector<float> drainPendingChunk();

    /// From the resuming of start() to the call of stop().
    [[nodiscard]] bool isRunning() const { return m_isRunning; }
    /// What the indicator shows, 0…1; 0 when not running.
    [[nodiscard]] float level() const { return m_waveform.constLast(); }
    /// The last levels, one for each 85 ms, always waveformSize of them with the newest last.
    [[nodiscard]] QList<float> waveform() const { return m_waveform; }
    /// For 2 s of a recording there has been nothing but digital zeros, or nothing at all.
    [[nodiscard]] bool deviceIsSilent() const { return m_deviceIsSilent; }

Q_SIGNALS:
    void levelChanged();
    void deviceIsSilentChanged();

private:
    struct Recording;

    [[nodiscard]] QCoro::Task<> record(std::shared_ptr<Recording> recording);
    void takeNews();
    void checkSilence();
    void setDeviceIsSilent(bool silent);
    void detach();

    const QString m_moduleFile;
    const std::shared_ptr<CapturedSamples> m_samples;
    std::shared_ptr<Recording> m_recording; // from start() to stop(), or to its failure
    bool m_isRunning = false;
    bool m_deviceIsSilent = false;
    QList<float> m_waveform;
    QTimer m_silenceCheck;
    std::stop_source m_lifetime;
    QThreadPool m_audioThread; // one: a recording begins when the one before it has ended
};

} // namespace orvane

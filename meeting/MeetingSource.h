#pragma once

#include <QList>
#include <QObject>

#include <QCoroTask>

#include <functional>
#include <vector>

namespace orvane {

/// What a meeting is recorded from: mono samples of 16 kHz in −1…1. One object records once. Main thread.
class MeetingSource : public QObject
{
    Q_OBJECT

public:
    static constexpr int sampleRate = 16'000;

    /// Called on another thread, in order.
    using ChunkHandler = std::function<void(std::vector<float>)>;

    /// To be set before start(): takes what is recorded in chunks of at least that many seconds.
    virtual void setChunks(double seconds, ChunkHandler handler) = 0;
    /// Ends when samples come; throws Error when the device cannot be used.
    [[nodiscard]] virtual QCoro::Task<> start() = 0;
    /// No chunk is handed out after its end.
    [[nodiscard]] virtual QCoro::Task<> stop() = 0;
    /// Takes what was recorded since the last chunk.
    [[nodiscard]] virtual std::vector<float> drainPendingChunk() = 0;

    /// Loudness, 0…1.
    [[nodiscard]] virtual float level() const = 0;
    /// The last loudnesses, newest last.
    [[nodiscard]] virtual QList<float> waveform() const = 0;
    /// Nothing has come from the device for some seconds, or only zeros.
    [[nodiscard]] virtual bool isSilent() const = 0;

Q_SIGNALS:
    void levelChanged();
    void isSilentChanged();
};

} // namespace orvane

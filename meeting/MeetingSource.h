#pragma once

#include <QList>
#include <QObject>

#include <QCoroTask>

#include <functional>
#include <vector>

namespace orvane {

/// What a meeting is recorded from: mono samples of sampleRate in −1…1. One object records once. Main thread.
class MeetingSource : public QObject
{
    Q_OBJECT

public:
    /// Called in order, on another thread or by flushChunk().
    using ChunkHandler = std::function<void(std::vector<float>)>;

    /// To be set before start(): takes what is recorded in chunks of at least that many seconds.
    virtual void setChunks(double seconds, ChunkHandler handler) = 0;
    /// Ends when samples come; throws Error when the device cannot be used.
    [[nodiscard]] virtual QCoro::Task<> start() = 0;
    /// No chunk is handed out after its end.
    [[nodiscard]] virtual QCoro::Task<> stop() = 0;
    /// Hands what was recorded since the last chunk to the handler before it returns.
    virtual void flushChunk() = 0;

    /// Loudness, 0…1.
    [[nodiscard]] virtual float level() const = 0;
    /// The last loudnesses, newest last.
    [[nodiscard]] virtual QList<float> waveform() const = 0;
    /// Nothing has come from the device for some seconds, or only zeros.
    [[nodiscard]] virtual bool isSilent() const = 0;

Q_SIGNALS:
    /// The recording cannot go on, for a reason in the interface language; stop() is still to be called.
    void endedByItself(const QString &reason);
    void levelChanged();
    void isSilentChanged();
};

} // namespace orvane

#pragma once

#include "audio/AudioRecorder.h"
#include "meeting/MeetingSource.h"

namespace orvane {

/// The default microphone, and whatever becomes it while it records.
class MicrophoneSource : public MeetingSource
{
    Q_OBJECT

public:
    /// See AudioRecorder.
    explicit MicrophoneSource(const QString &moduleFolder);

    void setChunks(double seconds, ChunkHandler handler) override;
    [[nodiscard]] QCoro::Task<> start() override;
    [[nodiscard]] QCoro::Task<> stop() override;
    void flushChunk() override { m_recorder.flushChunk(); }
    [[nodiscard]] float level() const override { return m_recorder.level(); }
    [[nodiscard]] QList<float> waveform() const override { return m_recorder.waveform(); }
    [[nodiscard]] bool isSilent() const override { return m_recorder.deviceIsSilent(); }

private:
    AudioRecorder m_recorder;
};

} // namespace orvane

#include "meeting/MicrophoneSource.h"

#include "audio/SampleRate.h"

namespace orvane {

static_assert(orvane::sampleRate == MeetingSource::sampleRate);

MicrophoneSource::MicrophoneSource(const QString &moduleFolder) : m_recorder(moduleFolder)
{
    connect(&m_recorder, &AudioRecorder::levelChanged, this, &MicrophoneSource::levelChanged);
    connect(&m_recorder, &AudioRecorder::deviceIsSilentChanged, this, &MicrophoneSource::isSilentChanged);
}

void MicrophoneSource::setChunks(double seconds, ChunkHandler handler)
{
    m_recorder.setChunks(seconds, std::move(handler));
}

QCoro::Task<> MicrophoneSource::start()
{
    return m_recorder.start();
}

QCoro::Task<> MicrophoneSource::stop()
{
    co_await m_recorder.stop();
}

std::vector<float> MicrophoneSource::drainPendingChunk()
{
    return m_recorder.drainPendingChunk();
}

} // namespace orvane

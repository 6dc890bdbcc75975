#include "meeting/MicrophoneSource.h"

namespace orvane {

MicrophoneSource::MicrophoneSource(const QString &moduleFolder) : m_recorder(moduleFolder)
{
    connect(&m_recorder, &AudioRecorder::endedByItself, this, &MicrophoneSource::endedByItself);
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

} // namespace orvane

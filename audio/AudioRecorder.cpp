#include "audio/AudioRecorder.h"

#include "audio/CaptureError.h"
#include "audio/CaptureSession.h"
#include "audio/CapturedSamples.h"
#include "base/Async.h"
#include "base/OneTimeEvent.h"

#include <utility>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace orvane {

namespace {

constexpr auto silenceLimit = 2s;

QList<float> noWaveform()
{
    return QList<float>(AudioRecorder::waveformSize, 0);
}

} // namespace

/// What those share who wait for one recording, with or without the recorder.
struct AudioRecorder::Recording
{
    std::shared_ptr<CaptureSession> session;
    const std::shared_ptr<OneTimeEvent> openedOrEnded = OneTimeEvent::create();
    const std::shared_ptr<OneTimeEvent> ended = OneTimeEvent::create();
    bool hasOpened = false;
    bool isStopped = false;
    CaptureSession::Result result; // once it has ended

    void end(CaptureSession::Result with)
    {
        result = std::move(with);
        openedOrEnded->happen();
        ended->happen();
    }
};

AudioRecorder::AudioRecorder(const QString &moduleFolder, QObject *parent)
    : QObject(parent),
      m_moduleFile(moduleFolder + u"/orvane-capture"_s),
      m_samples(std::make_shared<CapturedSamples>()),
      m_waveform(noWaveform())
{
    m_audioThread.setMaxThreadCount(1);
    m_silenceCheck.setSingleShot(true);
    connect(&m_silenceCheck, &QTimer::timeout, this, &AudioRecorder::checkSilence);
}

AudioRecorder::~AudioRecorder()
{
    m_scope.end();
    waitForDone(m_audioThread); // what drops its rest ends at once
}

QCoro::Task<> AudioRecorder::start()
{
    if (m_recording && m_recording->ended->hasHappened())
        discard();
    if (!m_recording) {
        m_recording = std::make_shared<Recording>();
        m_recording->session = std::make_shared<CaptureSession>(m_samples, [this] { takeNews(); });
        spawn(record(m_recording));
    }
    const std::shared_ptr<Recording> recording = m_recording;
    co_await m_scope(recording->openedOrEnded->wait());
    if (recording->isStopped)
        throw Cancelled();
    const std::optional<CaptureError> failure = recording->result.failure;
    if (!recording->hasOpened && failure)
        throw CaptureError(*failure);
}

QCoro::Task<> AudioRecorder::record(std::shared_ptr<Recording> recording)
{
    const std::stop_callback drop(m_scope.stop(), [session = recording->session] {
        session->detach();
        session->end(CaptureRest::Drop);
    });
    CaptureSession::Result result;
    try {
        result = co_await m_scope(
            offMainThread(&m_audioThread, [session = recording->session, file = m_moduleFile] {
                return session->run(file);
            }));
    } catch (const Gone &) {
        recording->end({}); // who waits for it finds the recorder gone
        throw;
    }
    recording->end(std::move(result));
    if (m_recording != recording)
        co_return;
    recording->session->detach();
    if (!recording->hasOpened)
        m_recording.reset(); // start() reports it
    showNothing();
    const std::optional<CaptureError> failure = recording->result.failure;
    if (m_recording == recording && failure)
        Q_EMIT endedByItself(failure->description());
}

QCoro::Task<std::vector<float>> AudioRecorder::stop()
{
    const std::shared_ptr<Recording> recording = letGo(CaptureRest::Keep);
    if (!recording)
        co_return {};
    co_await m_scope(recording->ended->wait());
    std::vector<float> samples = std::move(recording->result.samples);
    co_return samples;
}

void AudioRecorder::discard()
{
    letGo(CaptureRest::Drop);
}

std::shared_ptr<AudioRecorder::Recording> AudioRecorder::letGo(CaptureRest rest)
{
    std::shared_ptr<Recording> recording = std::exchange(m_recording, nullptr);
    if (!recording)
        return nullptr;
    recording->isStopped = true;
    recording->session->end(rest);
    recording->session->detach();
    showNothing();
    return recording;
}

std::vector<float> AudioRecorder::samplesAfter(size_t first, size_t count) const
{
    return m_isRunning ? m_samples->part(first, count) : std::vector<float>();
}

void AudioRecorder::setChunks(double seconds, ChunkHandler handler)
{
    m_samples->setChunks(seconds, std::move(handler));
}

void AudioRecorder::flushChunk()
{
    m_samples->flushChunk();
}

void AudioRecorder::takeNews()
{
    const std::shared_ptr<Recording> recording = m_recording;
    const CaptureSession::News news = recording->session->takeNews();
    if (news.opened) {
        m_isRunning = true;
        recording->hasOpened = true;
        recording->openedOrEnded->happen();
    }
    if (news.opened || news.heardAgain)
        m_silenceCheck.start(silenceLimit);
    if (!news.levels.empty()) {
        m_waveform.remove(0, qsizetype(news.levels.size()));
        m_waveform.append(QList<float>(news.levels.begin(), news.levels.end()));
        Q_EMIT levelChanged();
    }
    // Whoever saw the level may have stopped.
    if (news.heardAgain && m_recording == recording)
        setDeviceIsSilent(false);
}

void AudioRecorder::checkSilence()
{
    const auto lasting = m_recording->session->silence(silenceLimit);
    if (lasting < silenceLimit)
        m_silenceCheck.start(silenceLimit - lasting);
    else
        setDeviceIsSilent(true);
}

void AudioRecorder::setDeviceIsSilent(bool silent)
{
    if (std::exchange(m_deviceIsSilent, silent) != silent)
        Q_EMIT deviceIsSilentChanged();
}

void AudioRecorder::showNothing()
{
    m_isRunning = false;
    m_silenceCheck.stop();
    m_waveform = noWaveform();
    Q_EMIT levelChanged();
    setDeviceIsSilent(false);
}

} // namespace orvane

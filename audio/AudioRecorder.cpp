#include "audio/AudioRecorder.h"

#include "audio/CaptureSession.h"
#include "audio/CapturedSamples.h"
#include "base/Async.h"
#include "base/OneTimeEvent.h"
#include "base/localization/Localization.h"

#include <QCoroSignal>

#include <exception>

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

using CaptureError = AudioRecorder::CaptureError;

CaptureError CaptureError::noInputDevice()
{
    return {Kind::noInputDevice,
            Localization::text(
                u"Микрофон не найден. Подключите его или выберите устройство ввода в настройках звука.")};
}

CaptureError CaptureError::deviceFailed(const QString &description)
{
    return {Kind::deviceFailed, description};
}

/// What those share who wait for one recording, with or without the recorder.
struct AudioRecorder::Recording
{
    std::shared_ptr<CaptureSession> session;
    const std::shared_ptr<OneTimeEvent> opened = OneTimeEvent::create(); // or ended
    const std::shared_ptr<OneTimeEvent> ended = OneTimeEvent::create();
    bool hasOpened = false;
    bool isStopped = false;
    bool hasEnded = false;
    std::exception_ptr failure;
    std::vector<float> samples;
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
    m_lifetime.request_stop();
    waitForDone(m_audioThread); // what drops its rest ends at once
}

QCoro::Task<> AudioRecorder::start()
{
    const std::stop_token lifetime = m_lifetime.get_token();
    if (!m_recording) {
        m_recording = std::make_shared<Recording>();
        m_recording->session = std::make_shared<CaptureSession>(m_samples, [this] { takeNews(); });
        spawn(record(m_recording));
    }
    const std::shared_ptr<Recording> recording = m_recording;
    if (!recording->hasOpened)
        co_await recording->opened->wait();
    throwIfCancelled(lifetime);
    if (recording->failure)
        std::rethrow_exception(recording->failure);
    if (recording->isStopped)
        throw Cancelled();
}

QCoro::Task<> AudioRecorder::record(std::shared_ptr<Recording> recording)
{
    const std::stop_token lifetime = m_lifetime.get_token();
    const std::stop_callback drop(lifetime, [session = recording->session] {
        session->detach();
        session->end(CaptureRest::Drop);
    });
    try {
        recording->samples =
            co_await offMainThread(&m_audioThread, [session = recording->session, file = m_moduleFile] {
                return session->run(file);
            });
    } catch (...) {
        recording->failure = std::current_exception();
    }
    recording->hasEnded = true;
    if (!lifetime.stop_requested() && m_recording == recording)
        detach();
    recording->opened->happen();
    recording->ended->happen();
}

QCoro::Task<std::vector<float>> AudioRecorder::stop()
{
    const std::stop_token lifetime = m_lifetime.get_token();
    const std::shared_ptr<Recording> recording = m_recording;
    if (!recording)
        co_return {};
    recording->isStopped = true;
    recording->session->end(CaptureRest::Keep);
    detach();
    if (!recording->hasEnded)
        co_await recording->ended->wait();
    throwIfCancelled(lifetime);
    std::vector<float> samples = std::move(recording->samples);
    co_return samples;
}

void AudioRecorder::setChunks(double seconds, ChunkHandler handler)
{
    m_samples->setChunks(seconds, std::move(handler));
}

std::vector<float> AudioRecorder::drainPendingChunk()
{
    return m_samples->takePendingChunk();
}

void AudioRecorder::takeNews()
{
    const std::shared_ptr<Recording> recording = m_recording;
    const CaptureSession::News news = recording->session->takeNews();
    if (news.opened) {
        m_isRunning = true;
        recording->hasOpened = true;
        recording->opened->happen();
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

void AudioRecorder::detach()
{
    m_recording->session->detach();
    m_recording.reset();
    m_isRunning = false;
    m_silenceCheck.stop();
    m_waveform = noWaveform();
    Q_EMIT levelChanged();
    setDeviceIsSilent(false);
}

} // namespace orvane

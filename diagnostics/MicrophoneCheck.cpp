#include "diagnostics/MicrophoneCheck.h"

#include "audio/CaptureError.h"
#include "audio/Microphone.h"
#include "audio/MicrophoneAccess.h"
#include "base/Async.h"
#include "base/localization/Localization.h"

#include <algorithm>

namespace orvane {

using Localization::text;

MicrophoneCheck::MicrophoneCheck(const QString &moduleFolder, std::chrono::milliseconds listeningTime)
    : m_moduleFolder(moduleFolder),
      m_listeningTime(listeningTime),
      m_recorder(moduleFolder)
{
    connect(&m_recorder, &AudioRecorder::levelChanged, this, &MicrophoneCheck::levelChanged);
}

MicrophoneCheck::~MicrophoneCheck()
{
    m_scope.end();
}

QCoro::Task<CheckResult> MicrophoneCheck::run(std::stop_token stop)
{
    if (!co_await m_scope(requestMicrophone(stop), stop))
        throw CaptureError::accessRefused();
    try {
        co_return co_await m_scope(listen(stop), stop);
    } catch (const Gone &) {
        throw;
    } catch (...) {
        m_recorder.discard();
        throw;
    }
}

QCoro::Task<CheckResult> MicrophoneCheck::listen(std::stop_token stop)
{
    co_await m_scope(m_recorder.start(), stop);
    Q_EMIT levelChanged();
    QString name = co_await m_scope(microphoneName(m_moduleFolder), stop);
    if (name.isEmpty())
        name = text(u"Микрофон");
    co_await m_scope(sleepFor(m_listeningTime, stop), stop);
    const std::vector<float> samples = co_await m_scope(m_recorder.stop(), stop);
    const bool isHeard = std::ranges::any_of(samples, [](float sample) { return sample != 0; });
    if (!isHeard) {
        co_return CheckResult{
            .state = CheckResult::State::Bad,
            .text =
                text(u"Микрофон «%1» молчит: включите его кнопкой или выберите другой в настройках звука.")
                    .arg(name)};
    }
    co_return CheckResult{.state = CheckResult::State::Good, .text = text(u"Слышно: %1.").arg(name)};
}

} // namespace orvane

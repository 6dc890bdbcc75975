#include "audio/CaptureSession.h"

#include "base/Async.h"
#include "base/localization/Localization.h"

#include <QLibrary>

#include <algorithm>
#include <span>

using namespace Qt::StringLiterals;

namespace orvane {

namespace {

const CaptureModule &loadedModule(const QString &file)
{
    // Loading it again gives the same module; it stays for the life of the program.
    const auto entry =
        reinterpret_cast<CaptureModuleEntry *>(QLibrary::resolve(file, captureModuleEntryName));
    if (!entry) {
        throw CaptureError::deviceFailed(
            Localization::text(u"Модуль записи звука не загрузился. Переустановите программу."));
    }
    return *entry();
}

void throwIfFailed(CaptureOutcome outcome)
{
    switch (outcome) {
    case CaptureOutcome::Ended:
        return;
    case CaptureOutcome::NoService:
        throw CaptureError::deviceFailed(Localization::text(
            u"Звуковая служба не отвечает. Проверьте, запущена ли она (PulseAudio или PipeWire)."));
    case CaptureOutcome::AccessRefused:
        throw CaptureError::accessRefused();
    case CaptureOutcome::NoDevice:
        throw CaptureError::noInputDevice();
    case CaptureOutcome::NotOpened:
        throw CaptureError::deviceFailed(Localization::text(
            u"Микрофон не открывается. Подключите его заново или выберите другой в настройках звука."));
    case CaptureOutcome::Broken:
        throw CaptureError::deviceFailed(
            Localization::text(u"Звуковая система отказала, запись закончилась раньше времени."));
    }
}

} // namespace

CaptureSession::CaptureSession(std::shared_ptr<CapturedSamples> samples, std::function<void()> hasNews)
    : m_samples(std::move(samples)),
      m_hasNews(std::move(hasNews))
{}

CaptureSession::Result CaptureSession::run(const QString &moduleFile)
{
    m_samples->clear();
    Result result;
    try {
        throwIfFailed(capture(loadedModule(moduleFile)));
    } catch (const CaptureError &error) {
        result.failure = error;
    }
    result.samples = m_samples->takeAll();
    return result;
}

CaptureOutcome CaptureSession::capture(const CaptureModule &module)
{
    const auto release = [this](Capture *capture) {
        {
            const std::lock_guard lock(m_mutex);
            m_capture = nullptr;
        }
        capture->release();
    };
    const std::unique_ptr<Capture, decltype(release)> capture(module.create(), release);
    if (!capture)
        return CaptureOutcome::NotOpened;
    {
        const std::lock_guard lock(m_mutex);
        if (m_ending)
            return CaptureOutcome::Ended;
        m_capture = capture.get();
    }
    return capture->run(*this);
}

void CaptureSession::end(CaptureRest rest)
{
    const std::lock_guard lock(m_mutex);
    if (rest == CaptureRest::Drop)
        m_rest = rest;
    m_ending = true;
    if (m_capture)
        m_capture->end(m_rest);
}

CaptureSession::News CaptureSession::takeNews()
{
    const std::lock_guard lock(m_mutex);
    m_announced = false;
    return std::exchange(m_news, {});
}

std::chrono::milliseconds CaptureSession::silence(std::chrono::milliseconds limit)
{
    const std::lock_guard lock(m_mutex);
    const auto lasting = std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - m_lastSound);
    m_isSilent = lasting >= limit;
    return lasting;
}

void CaptureSession::opened() noexcept
{
    {
        const std::lock_guard lock(m_mutex);
        m_lastSound = Clock::now();
        m_news.opened = true;
    }
    announce();
}

void CaptureSession::deliver(const float *samples, std::size_t count) noexcept
{
    const std::span fresh(samples, count);
    m_samples->add(fresh);
    const bool isSound = std::ranges::any_of(fresh, [](float sample) { return sample != 0; });
    bool isNews = false;
    {
        const std::lock_guard lock(m_mutex);
        if (isSound) {
            m_lastSound = Clock::now();
            isNews = m_news.heardAgain = std::exchange(m_isSilent, false) || m_news.heardAgain;
        }
        m_meter.add(fresh, [&](float level) {
            isNews = true;
            // When the main thread is slow, what would have left the waveform meanwhile is not kept.
            if (m_news.levels.size() == LevelMeter::waveformSize)
                m_news.levels.erase(m_news.levels.begin());
            m_news.levels.push_back(level);
        });
    }
    if (isNews)
        announce();
}

void CaptureSession::announce() noexcept
{
    {
        const std::lock_guard lock(m_mutex);
        if (std::exchange(m_announced, true))
            return;
    }
    QMetaObject::invokeMethod(QCoreApplication::instance(),
                              detail::HandedOver([session = shared_from_this()] {
                                  if (const auto hasNews = session->m_hasNews)
                                      hasNews();
                              }),
                              Qt::QueuedConnection);
}

} // namespace orvane

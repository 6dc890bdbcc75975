#pragma once

#include "audio/CaptureError.h"
#include "audio/CapturedSamples.h"
#include "audio/LevelMeter.h"
#include "audio/capture/CaptureModule.h"

#include <QString>

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

namespace orvane {

/// One recording on its way from the device to the main thread.
class CaptureSession final : public CaptureListener, public std::enable_shared_from_this<CaptureSession>
{
public:
    using Clock = std::chrono::steady_clock;

    /// Levels to show, oldest first, and whether sound has come after silence was found.
    struct News
    {
        bool opened = false;
        bool heardAgain = false;
        std::vector<float> levels;
    };

    CaptureSession(std::shared_ptr<CapturedSamples> samples, std::function<void()> hasNews);
    virtual ~CaptureSession() = default;
    CaptureSession(const CaptureSession &) = delete;
    CaptureSession &operator=(const CaptureSession &) = delete;

    /// What was kept of a recording, and why it could not begin or ended by itself.
    struct Result
    {
        std::vector<float> samples;
        std::optional<CaptureError> failure;
    };

    /// Records until end(). On the audio thread, which it makes of the calling one.
    [[nodiscard]] Result run(const QString &moduleFile);

    /// Makes run() return soon; before it, at once. Any thread. Once dropped, the rest stays dropped.
    void end(CaptureRest rest);

    // On the main thread, where `hasNews` is called; one call stands for all that is new.
    [[nodiscard]] News takeNews();
    /// Nothing calls `hasNews` after this.
    void detach() { m_hasNews = nullptr; }
    /// How long there has been nothing, or nothing but digital zeros. The next sound will be news when
    /// that is longer than `limit`.
    [[nodiscard]] std::chrono::milliseconds silence(std::chrono::milliseconds limit);

    void opened() noexcept override;
    void deliver(const float *samples, std::size_t count) noexcept override;

private:
    [[nodiscard]] CaptureOutcome capture(const CaptureModule &module);
    void announce() noexcept;

    const std::shared_ptr<CapturedSamples> m_samples;
    std::function<void()> m_hasNews;
    LevelMeter m_meter;

    std::mutex m_mutex;
    Capture *m_capture = nullptr;
    bool m_ending = false;
    CaptureRest m_rest = CaptureRest::Keep;
    bool m_announced = false;
    bool m_isSilent = false;
    Clock::time_point m_lastSound;
    News m_news;
};

} // namespace orvane

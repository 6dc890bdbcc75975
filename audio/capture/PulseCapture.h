#pragma once

#include "audio/capture/CaptureModule.h"
#include "audio/capture/PulseHandles.h"
#include "audio/capture/PulseStream.h"

#include <atomic>
#include <chrono>
#include <memory>
#include <optional>

namespace orvane {

/// Records the sound server's default source, and the next one when that changes or goes. Without a source
/// or a server it waits for one. The monitors of outputs are no microphones.
class PulseCapture final : public Capture
{
public:
    /// Throws std::bad_alloc.
    PulseCapture();
    virtual ~PulseCapture();
    PulseCapture(const PulseCapture &) = delete;
    PulseCapture &operator=(const PulseCapture &) = delete;

    CaptureOutcome run(CaptureListener &listener) noexcept override;
    void end(CaptureRest rest) noexcept override;
    void release() noexcept override { delete this; }

private:
    enum class Request { None, Keep, Drop };

    void iterate();
    void heedRequest();
    void loopFailed();

    void connect();
    void contextChanged();
    void contextLost();
    [[nodiscard]] bool isRefused() const;
    void findSource();
    void sourceFound(const pa_source_info &source);
    void searchEnded();
    void openStream(const pa_source_info &source);
    void closeStream();
    void streamChanged();
    void streamEnded();

    void wake(std::chrono::microseconds after);
    void stopWaiting();
    void timeIsUp();
    void fail(CaptureOutcome outcome);

    std::atomic<Request> m_request = Request::None;
    Request m_heeded = Request::None;
    std::optional<CaptureOutcome> m_outcome;
    bool m_opened = false;
    bool m_searchAgain = false;
    CaptureListener *m_listener = nullptr;

    // In the order of their making: what comes later uses what comes before.
    PulseHandle<pa_mainloop> m_loop;
    pa_mainloop_api *m_api;
    pa_time_event *m_timer = nullptr;
    PulseHandle<pa_context> m_context;
    PulseHandle<pa_operation> m_subscribing;
    PulseHandle<pa_operation> m_searching;
    std::unique_ptr<PulseStream> m_stream;
};

} // namespace orvane

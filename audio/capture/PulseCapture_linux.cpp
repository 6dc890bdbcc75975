#include "audio/capture/PulseCapture.h"

#include "audio/capture/PulseInputName.h"

#include <new>
#include <utility>

#include <sys/time.h>

using namespace std::chrono_literals;

namespace orvane {

namespace {

// Opening answers within milliseconds; what takes as long as this does not answer at all.
constexpr auto openingLimit = 5s;
constexpr auto retryInterval = 500ms;
// More than a device holds back when it is asked to deliver every 20 ms.
constexpr auto drainLimit = 250ms;

PulseCapture &captureOf(void *self)
{
    return *static_cast<PulseCapture *>(self);
}

} // namespace

PulseCapture::PulseCapture() : m_loop(pa_mainloop_new())
{
    if (!m_loop)
        throw std::bad_alloc();
    m_api = pa_mainloop_get_api(m_loop.get());
}

PulseCapture::~PulseCapture() = default;

CaptureOutcome PulseCapture::run(CaptureListener &listener) noexcept
{
    m_listener = &listener;
    connect();
    while (!m_outcome)
        iterate();
    closeStream();
    return *m_outcome;
}

void PulseCapture::end(CaptureRest rest) noexcept
{
    m_request = rest == CaptureRest::Keep ? Request::Keep : Request::Drop;
    pa_mainloop_wakeup(m_loop.get());
}

void PulseCapture::iterate()
{
    // Preparing forgets earlier wakings, so the request is looked at after it.
    if (pa_mainloop_prepare(m_loop.get(), -1) < 0)
        return loopFailed();
    heedRequest();
    if (m_outcome)
        return;
    if (pa_mainloop_poll(m_loop.get()) < 0 || pa_mainloop_dispatch(m_loop.get()) < 0)
        loopFailed();
}

void PulseCapture::loopFailed()
{
    fail(m_opened ? CaptureOutcome::Broken : CaptureOutcome::NotOpened);
}

void PulseCapture::heedRequest()
{
    const Request request = m_request;
    if (request == m_heeded)
        return;
    m_heeded = request;
    if (request == Request::Drop || !m_stream || m_stream->state() != PulseStream::State::Running) {
        m_outcome = CaptureOutcome::Ended;
        return;
    }
    wake(drainLimit);
    m_stream->drain();
}

void PulseCapture::connect()
{
    wake(openingLimit);
    m_context.reset(pa_context_new(m_api, "Orvane"));
    if (!m_context)
        return contextLost();
    pa_context_set_state_callback(
        m_context.get(), [](pa_context *, void *self) { captureOf(self).contextChanged(); }, this);
    pa_context_set_subscribe_callback(
        m_context.get(),
        [](pa_context *, pa_subscription_event_type_t, std::uint32_t, void *self) {
            captureOf(self).findSource();
        },
        this);
    if (pa_context_connect(m_context.get(), nullptr, PA_CONTEXT_NOFLAGS, nullptr) < 0)
        contextLost();
}

void PulseCapture::contextChanged()
{
    switch (pa_context_get_state(m_context.get())) {
    case PA_CONTEXT_READY: {
        // NOLINTNEXTLINE(clang-analyzer-optin.core.EnumCastOutOfRange): libpulse's enumeration of bits
        const auto events = pa_subscription_mask_t(PA_SUBSCRIPTION_MASK_SOURCE | PA_SUBSCRIPTION_MASK_SERVER);
        m_subscribing.reset(pa_context_subscribe(m_context.get(), events, nullptr, nullptr));
        findSource();
        break;
    }
    case PA_CONTEXT_FAILED:
    case PA_CONTEXT_TERMINATED:
        contextLost();
        break;
    default:
        break;
    }
}

void PulseCapture::contextLost()
{
    if (!m_opened)
        return fail(isRefused() ? CaptureOutcome::AccessRefused : CaptureOutcome::NoService);
    closeStream();
    m_searching.reset();
    m_subscribing.reset();
    m_context.reset();
    wake(retryInterval);
}

bool PulseCapture::isRefused() const
{
    return m_context && pa_context_errno(m_context.get()) == PA_ERR_ACCESS;
}

void PulseCapture::findSource()
{
    m_searchAgain = m_searching != nullptr;
    if (m_searchAgain || m_heeded != Request::None)
        return;
    m_searching.reset(pa_context_get_source_info_by_name(
        m_context.get(), "@DEFAULT_SOURCE@",
        [](pa_context *, const pa_source_info *source, int end, void *self) {
            if (end == 0)
                captureOf(self).sourceFound(*source);
            else
                captureOf(self).searchEnded();
        },
        this));
}

void PulseCapture::sourceFound(const pa_source_info &source)
{
    const bool isMonitor = source.monitor_of_sink != PA_INVALID_INDEX;
    if (!isMonitor && (!m_stream || m_stream->source() != source.index))
        openStream(source);
}

void PulseCapture::searchEnded()
{
    m_searching.reset();
    if (!m_stream && !m_opened)
        return fail(CaptureOutcome::NoDevice);
    if (m_searchAgain)
        findSource();
}

void PulseCapture::openStream(const pa_source_info &source)
{
    closeStream();
    wake(openingLimit);
    try {
        m_stream =
            std::make_unique<PulseStream>(m_context.get(), source, *m_listener, [this] { streamChanged(); });
    } catch (const std::bad_alloc &) {
        // as if the device refused
    }
    if (!m_stream || m_stream->state() == PulseStream::State::Ended)
        streamEnded();
}

void PulseCapture::closeStream()
{
    if (const std::unique_ptr<PulseStream> closed = std::move(m_stream))
        closed->finish();
}

void PulseCapture::streamChanged()
{
    if (m_heeded == Request::Keep && m_stream->isDrained()) {
        m_outcome = CaptureOutcome::Ended;
        return;
    }
    switch (m_stream->state()) {
    case PulseStream::State::Ended:
        streamEnded();
        break;
    case PulseStream::State::Running:
        if (m_heeded == Request::None)
            stopWaiting();
        if (!std::exchange(m_opened, true))
            m_listener->opened();
        break;
    case PulseStream::State::Opening:
        break;
    }
}

void PulseCapture::streamEnded()
{
    if (!m_opened)
        return fail(isRefused() ? CaptureOutcome::AccessRefused : CaptureOutcome::NotOpened);
    closeStream();
    // Unplugged: the server reports its successor. Or opening failed, and may not the next time.
    wake(retryInterval);
}

void PulseCapture::wake(std::chrono::microseconds after)
{
    stopWaiting();
    timeval time{};
    gettimeofday(&time, nullptr);
    pa_timeval_add(&time, pa_usec_t(after.count()));
    m_timer = m_api->time_new(
        m_api, &time,
        [](pa_mainloop_api *, pa_time_event *, const timeval *, void *self) { captureOf(self).timeIsUp(); },
        this);
}

void PulseCapture::stopWaiting()
{
    if (pa_time_event *timer = std::exchange(m_timer, nullptr))
        m_api->time_free(timer);
}

void PulseCapture::timeIsUp()
{
    stopWaiting();
    if (m_heeded != Request::None)
        m_outcome = CaptureOutcome::Ended;
    else if (!m_opened)
        fail(m_stream ? CaptureOutcome::NotOpened : CaptureOutcome::NoService);
    else if (!m_context)
        connect();
    else if (pa_context_get_state(m_context.get()) != PA_CONTEXT_READY)
        contextLost();
    else if (!m_stream)
        findSource();
    else if (m_stream->state() == PulseStream::State::Opening)
        streamEnded();
}

void PulseCapture::fail(CaptureOutcome outcome)
{
    m_outcome = outcome;
}

} // namespace orvane

namespace {

class PulseCaptureModule final : public orvane::CaptureModule
{
public:
    [[nodiscard]] orvane::Capture *create() const noexcept override
    {
        try {
            return new orvane::PulseCapture;
        } catch (const std::bad_alloc &) {
            return nullptr;
        }
    }
    void nameInput(char *name, std::size_t size) const noexcept override
    {
        orvane::PulseInputName(name, size).ask();
    }
};

} // namespace

extern "C" __attribute__((visibility("default"))) const orvane::CaptureModule *orvaneCaptureModule3()
{
    static const PulseCaptureModule module;
    return &module;
}

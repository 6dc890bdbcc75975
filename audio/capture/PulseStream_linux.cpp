#include "audio/capture/PulseStream.h"

#include <new>

namespace orvane {

namespace {

// How often the device hands over: the most that the level and the end of a recording lag behind.
constexpr pa_usec_t deliveryInterval = 20 * PA_USEC_PER_MSEC;

pa_sample_spec floatsOf(const pa_source_info &source)
{
    // The server resamples by what its configuration says, often roughly: this is done here.
    return {.format = PA_SAMPLE_FLOAT32NE,
            .rate = source.sample_spec.rate,
            .channels = source.sample_spec.channels};
}

} // namespace

PulseStream::PulseStream(pa_context *context, const pa_source_info &source, CaptureListener &listener,
                         std::function<void()> changed)
    : m_listener(listener),
      m_changed(std::move(changed)),
      m_source(source.index),
      m_format(floatsOf(source)),
      m_converter(int(m_format.rate), m_format.channels),
      m_stream(pa_stream_new(context, "Microphone", &m_format, &source.channel_map))
{
    if (!m_stream) {
        m_state = State::Ended;
        return;
    }
    pa_stream_set_state_callback(
        m_stream.get(), [](pa_stream *, void *self) { static_cast<PulseStream *>(self)->stateChanged(); },
        this);
    pa_stream_set_read_callback(
        m_stream.get(), [](pa_stream *, size_t, void *self) { static_cast<PulseStream *>(self)->read(); },
        this);

    pa_buffer_attr buffer{};
    buffer.maxlength = buffer.tlength = buffer.prebuf = buffer.minreq = std::uint32_t(-1);
    buffer.fragsize = std::uint32_t(pa_usec_to_bytes(deliveryInterval, &m_format));
    // NOLINTNEXTLINE(clang-analyzer-optin.core.EnumCastOutOfRange): libpulse's enumeration of bits
    const auto flags = pa_stream_flags_t(PA_STREAM_DONT_MOVE | PA_STREAM_ADJUST_LATENCY);
    if (pa_stream_connect_record(m_stream.get(), source.name, &buffer, flags) < 0)
        m_state = State::Ended;
}

void PulseStream::drain()
{
    m_asking.reset(pa_stream_update_timing_info(
        m_stream.get(), [](pa_stream *, int, void *self) { static_cast<PulseStream *>(self)->restKnown(); },
        this));
}

void PulseStream::finish()
{
    deliver(m_converter.finish());
}

void PulseStream::stateChanged()
{
    switch (pa_stream_get_state(m_stream.get())) {
    case PA_STREAM_READY:
        m_state = State::Running;
        break;
    case PA_STREAM_FAILED:
    case PA_STREAM_TERMINATED:
        m_state = State::Ended;
        break;
    default:
        return;
    }
    m_changed();
}

void PulseStream::read()
{
    const void *data = nullptr;
    size_t bytes = 0;
    while (pa_stream_peek(m_stream.get(), &data, &bytes) == 0 && bytes > 0) {
        const size_t count = bytes / sizeof(float);
        if (data) { // without, it is a hole
            try {
                deliver(m_converter.convert({static_cast<const float *>(data), count}));
            } catch (const std::bad_alloc &) {
                // These samples are lost; there may be memory for the next ones.
            }
        }
        pa_stream_drop(m_stream.get());
        if (m_restFrames)
            *m_restFrames -= std::int64_t(count / m_format.channels);
    }
    if (m_restFrames)
        m_changed();
}

void PulseStream::restKnown()
{
    pa_usec_t behind = 0;
    int isNegative = 0;
    const bool isKnown = pa_stream_get_latency(m_stream.get(), &behind, &isNegative) == 0 && isNegative == 0;
    m_restFrames = isKnown ? std::int64_t(behind * m_format.rate / PA_USEC_PER_SEC) : 0;
    m_changed();
}

void PulseStream::deliver(std::span<const float> samples)
{
    if (!samples.empty())
        m_listener.deliver(samples.data(), samples.size());
}

} // namespace orvane

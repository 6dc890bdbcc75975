#pragma once

#include "audio/capture/CaptureModule.h"
#include "audio/capture/InputConverter.h"
#include "audio/capture/PulseHandles.h"

#include <cstdint>
#include <functional>
#include <optional>

namespace orvane {

/// One microphone while it is being recorded. The server never moves it to another one: when its own goes,
/// it ends. Everything happens on the thread of the context's loop.
class PulseStream
{
public:
    enum class State { Opening, Running, Ended };

    /// Begins to open the source. `changed` is called after each change of what is reported below; the stream
    /// may be destroyed in it. Throws std::bad_alloc.
    PulseStream(pa_context *context, const pa_source_info &source, CaptureListener &listener,
                std::function<void()> changed);
    PulseStream(const PulseStream &) = delete;
    PulseStream &operator=(const PulseStream &) = delete;

    [[nodiscard]] State state() const { return m_state; }
    /// The server's number of the source, another one after each plugging in.
    [[nodiscard]] std::uint32_t source() const { return m_source; }

    /// Finds out how much is recorded and not delivered yet; isDrained() once that has been.
    void drain();
    [[nodiscard]] bool isDrained() const
    {
        return m_state == State::Ended || (m_restFrames && *m_restFrames <= 0);
    }

    /// Delivers what the filter holds. The last that is called.
    void finish();

private:
    void stateChanged();
    void read();
    void restKnown();
    void deliver(std::span<const float> samples);

    CaptureListener &m_listener;
    std::function<void()> m_changed;
    std::uint32_t m_source;
    pa_sample_spec m_format;
    InputConverter m_converter;
    State m_state = State::Opening;
    std::optional<std::int64_t> m_restFrames;
    PulseHandle<pa_stream> m_stream;
    PulseHandle<pa_operation> m_asking;
};

} // namespace orvane

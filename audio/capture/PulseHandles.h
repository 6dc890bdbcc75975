#pragma once

#include <pulse/pulseaudio.h>

#include <memory>

namespace orvane {

/// Frees what libpulse made; nothing of it calls back afterwards.
struct PulseDeleter
{
    void operator()(pa_mainloop *loop) const { pa_mainloop_free(loop); }
    void operator()(pa_context *context) const
    {
        pa_context_set_state_callback(context, nullptr, nullptr);
        pa_context_set_subscribe_callback(context, nullptr, nullptr);
        pa_context_disconnect(context);
        pa_context_unref(context);
    }
    void operator()(pa_stream *stream) const
    {
        pa_stream_set_state_callback(stream, nullptr, nullptr);
        pa_stream_set_read_callback(stream, nullptr, nullptr);
        pa_stream_disconnect(stream);
        pa_stream_unref(stream);
    }
    void operator()(pa_operation *operation) const
    {
        pa_operation_cancel(operation);
        pa_operation_unref(operation);
    }
};

template <typename Thing>
using PulseHandle = std::unique_ptr<Thing, PulseDeleter>;

} // namespace orvane

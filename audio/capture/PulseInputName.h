#pragma once

#include "audio/capture/PulseHandles.h"

#include <cstddef>

namespace orvane {

/// Asks the sound server once what it calls the default source.
class PulseInputName
{
public:
    /// The name goes into `name`, see CaptureModule; empty until it is known.
    PulseInputName(char *name, std::size_t size);
    PulseInputName(const PulseInputName &) = delete;
    PulseInputName &operator=(const PulseInputName &) = delete;

    /// Returns when the answer is there, or none is to be expected.
    void ask() noexcept;

private:
    void contextChanged();
    void sourceFound(const pa_source_info &source);
    void end() { m_ended = true; }

    char *m_name;
    std::size_t m_size;
    bool m_ended = false;

    // In the order of their making: what comes later uses what comes before.
    PulseHandle<pa_mainloop> m_loop;
    PulseHandle<pa_context> m_context;
    PulseHandle<pa_operation> m_searching;
};

} // namespace orvane

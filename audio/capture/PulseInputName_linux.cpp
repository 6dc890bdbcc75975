#include "audio/capture/PulseInputName.h"

#include <algorithm>
#include <chrono>
#include <string_view>

using namespace std::chrono_literals;

namespace orvane {

namespace {

constexpr auto patience = 2s;

PulseInputName &askerOf(void *self)
{
    return *static_cast<PulseInputName *>(self);
}

} // namespace

PulseInputName::PulseInputName(char *name, std::size_t size)
    : m_name(name),
      m_size(size),
      m_loop(pa_mainloop_new())
{
    *m_name = '\0';
}

void PulseInputName::ask() noexcept
{
    if (!m_loop)
        return;
    m_context.reset(pa_context_new(pa_mainloop_get_api(m_loop.get()), "Orvane"));
    if (!m_context)
        return;
    pa_context_set_state_callback(
        m_context.get(), [](pa_context *, void *self) { askerOf(self).contextChanged(); }, this);
    if (pa_context_connect(m_context.get(), nullptr, PA_CONTEXT_NOFLAGS, nullptr) < 0)
        return;
    const auto end = std::chrono::steady_clock::now() + patience;
    while (!m_ended) {
        const auto left =
            std::chrono::duration_cast<std::chrono::microseconds>(end - std::chrono::steady_clock::now());
        if (left <= 0us || pa_mainloop_prepare(m_loop.get(), int(left.count())) < 0 ||
            pa_mainloop_poll(m_loop.get()) < 0 || pa_mainloop_dispatch(m_loop.get()) < 0)
            return;
    }
}

void PulseInputName::contextChanged()
{
    const pa_context_state_t state = pa_context_get_state(m_context.get());
    if (!PA_CONTEXT_IS_GOOD(state))
        end();
    if (state != PA_CONTEXT_READY)
        return;
    m_searching.reset(pa_context_get_source_info_by_name(
        m_context.get(), "@DEFAULT_SOURCE@",
        [](pa_context *, const pa_source_info *source, int last, void *self) {
            if (last == 0)
                askerOf(self).sourceFound(*source);
            else
                askerOf(self).end();
        },
        this));
}

void PulseInputName::sourceFound(const pa_source_info &source)
{
    if (source.monitor_of_sink != PA_INVALID_INDEX || !source.description)
        return; // no microphone
    const std::string_view description(source.description);
    const std::size_t length = std::min(description.size(), m_size - 1);
    std::copy_n(description.data(), length, m_name);
    m_name[length] = '\0';
}

} // namespace orvane

#include "dictation/DictationTrigger.h"

#include <utility>

namespace orvane {

DictationTrigger::DictationTrigger(Clock clock) : m_clock(std::move(clock)) {}

bool DictationTrigger::keyChanged(TriggerKey trigger, TriggerKey key, bool down)
{
    if (key != trigger) {
        m_firstPress.reset();
        return false;
    }
    if (!down)
        return false;
    const std::chrono::nanoseconds now = m_clock();
    if (m_firstPress && now - *m_firstPress < limit) {
        m_firstPress.reset();
        return true;
    }
    m_firstPress = now;
    return false;
}

} // namespace orvane

#include "audio/SampleBuffer.h"

#include "audio/SampleRate.h"

#include <algorithm>
#include <new>
#include <span>
#include <stdexcept>

namespace orvane {

namespace {

constexpr size_t blockSamples = 1 << 18;
// A length told in whole seconds, or without the last packet, still fits.
constexpr std::int64_t spareSamples = 2 * sampleRate;

// Without a branch, so that the compiler treats several samples at once.
float inRange(float sample)
{
    const float clipped = std::max(-1.0F, std::min(sample, 1.0F));
    return sample == sample ? clipped : 0.0F;
}

} // namespace

void SampleBuffer::expect(std::int64_t count) noexcept
{
    if (count <= 0 || count > mostSamples || !m_blocks.empty())
        return;
    try {
        m_blocks.emplace_back().reserve(size_t(count + spareSamples));
    } catch (const std::bad_alloc &) {
        m_blocks.clear(); // the file may exaggerate: blocks will do
    }
}

float *SampleBuffer::room(std::int64_t count) noexcept
{
    m_tooLong = m_count + count > mostSamples;
    if (m_tooLong)
        return nullptr;
    const auto wanted = size_t(count);
    try {
        if (m_blocks.empty() || m_blocks.back().capacity() - m_committed < wanted) {
            if (!m_blocks.empty())
                m_blocks.back().resize(m_committed);
            m_blocks.emplace_back().reserve(std::max(wanted, blockSamples));
            m_committed = 0;
        }
        m_blocks.back().resize(m_committed + wanted);
    } catch (const std::bad_alloc &) {
        return nullptr;
    }
    return m_blocks.back().data() + m_committed;
}

void SampleBuffer::commit(std::int64_t count) noexcept
{
    const auto fresh = std::span(m_blocks.back()).subspan(m_committed, size_t(count));
    std::ranges::transform(fresh, fresh.begin(), inRange);
    m_committed += size_t(count);
    m_count += count;
}

std::vector<float> SampleBuffer::take()
{
    if (m_blocks.empty())
        return {};
    m_blocks.back().resize(m_committed);
    std::vector<float> all = std::move(m_blocks.front());
    m_blocks.pop_front();
    if (m_blocks.empty() && all.capacity() / 2 > all.size())
        all.shrink_to_fit();
    all.reserve(size_t(m_count));
    for (; !m_blocks.empty(); m_blocks.pop_front())
        all.insert(all.end(), m_blocks.front().begin(), m_blocks.front().end());
    m_count = 0;
    m_committed = 0;
    return all;
}

} // namespace orvane

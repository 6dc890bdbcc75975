#include "audio/SampleBuffer.h"

#include "audio/SampleRate.h"

#include <algorithm>
#include <new>
#include <span>

#include <sys/mman.h>
#include <unistd.h>

namespace orvane {

namespace {

constexpr size_t blockSamples = 1 << 18;
// A length reported in whole seconds, or without the last packet, still fits.
constexpr std::int64_t spareSamples = 2 * sampleRate;

// Without a branch, so that the compiler treats several samples at once.
float inRange(float sample)
{
    const float clipped = std::max(-1.0F, std::min(sample, 1.0F));
    return sample == sample ? clipped : 0.0F;
}

// The system takes back the whole pages of memory whose content is not needed any more: a block as long as
// the recording would otherwise stay there until all of it has been copied.
void giveBack(std::span<float> samples)
{
    static const auto page = size_t(::sysconf(_SC_PAGESIZE));
    const auto bytes = std::as_writable_bytes(samples);
    const size_t before = (page - std::uintptr_t(bytes.data()) % page) % page;
    if (before < bytes.size())
        ::madvise(bytes.data() + before, (bytes.size() - before) / page * page, MADV_DONTNEED);
}

} // namespace

void SampleBuffer::expect(std::int64_t count) noexcept
{
    if (count <= 0 || count > maxSamples || !m_blocks.empty())
        return;
    try {
        m_blocks.emplace_back().reserve(size_t(count + spareSamples));
    } catch (const std::bad_alloc &) {
        m_blocks.clear(); // the file may exaggerate: blocks will do
    }
}

float *SampleBuffer::room(std::int64_t count) noexcept
{
    m_tooLong = m_count + count > maxSamples;
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

std::vector<float> SampleBuffer::joined()
{
    std::vector<float> all;
    all.reserve(size_t(m_count)); // takes memory only as it is filled
    for (; !m_blocks.empty(); m_blocks.pop_front()) {
        const std::span<float> block = m_blocks.front();
        for (size_t done = 0; done < block.size(); done += blockSamples) {
            const auto piece = block.subspan(done, std::min(blockSamples, block.size() - done));
            all.insert(all.end(), piece.begin(), piece.end());
            giveBack(piece);
        }
    }
    return all;
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
    if (!m_blocks.empty()) {
        m_blocks.push_front(std::move(all));
        all = joined();
    }
    m_count = 0;
    m_committed = 0;
    return all;
}

} // namespace orvane

#include "models/DownloadRun.h"

#include "models/ModelDownloader.h"
#include "models/PartFile.h"
#include "models/SegmentStream.h"

#include <QDeadlineTimer>
#include <QFileInfo>
#include <QStorageInfo>
#include <QSysInfo>

#include <algorithm>
#include <vector>

using namespace std::chrono_literals;

namespace orvane {

namespace {

constexpr auto longestDownload = 24h;
/// A record of six segments has a few hundred bytes.
constexpr qint64 largestRecord = 64 * 1024;

/// Ends the first request when its headers are there.
struct HeadersSuffice
{};

class FirstByte : public Transfer
{
public:
    using Transfer::Transfer;

    [[nodiscard]] const DownloadAnswer &answer() const { return m_answer; }

protected:
    void answered(const DownloadAnswer &answer) override
    {
        m_answer = answer;
        throw HeadersSuffice();
    }
    void received(std::span<const char>) override {}
    void ended() override {}

private:
    DownloadAnswer m_answer;
};

} // namespace

DownloadRun::DownloadRun(Job job) : m_job(std::move(job)) {}

void DownloadRun::run()
{
    throwIfCancelled(m_job.stop);
    const Probe found = probe();
    m_job.sizeKnown(found.total);

    PartFile part(PartFile::pathFor(m_job.to));
    DownloadMeta meta = begin(found, part);
    DownloadState state(std::move(meta), PartFile::metaPathFor(m_job.to), m_job.progress);
    fetch(found, part, state);
    complete(part, found.total);
}

DownloadRun::Probe DownloadRun::probe()
{
    auto request = std::make_unique<FirstByte>(m_job.from, ByteRange{0, 0}, m_job.options.probeTimeout);
    const FirstByte &firstByte = *request;
    const std::unique_ptr<Transfer> transfers[] = {std::move(request)};
    try {
        m_session.run(transfers, m_job.stop);
    } catch (const HeadersSuffice &) {
        // Its one byte, or the whole file, is not for us.
    }

    const DownloadAnswer &answer = firstByte.answer();
    if (answer.status != 200 && answer.status != 206)
        throw DownloadError::badStatus(answer.status);
    const bool givesRanges = answer.status == 206;
    std::optional<qint64> total = answer.contentLength;
    if (givesRanges)
        total = answer.contentRange ? std::optional(answer.contentRange->total) : std::nullopt;
    if (!total || *total <= 0 || answer.isEncoded)
        throw DownloadError::badServerAnswer();
    return {.total = *total, .etag = answer.etag, .givesRanges = givesRanges};
}

std::optional<DownloadMeta> DownloadRun::resumable(const Probe &probe, const PartFile &part) const
{
    QFile record(PartFile::metaPathFor(m_job.to));
    if (!probe.givesRanges || !record.open(QFile::ReadOnly))
        return std::nullopt;
    auto meta = DownloadMeta::fromJson(record.read(largestRecord));
    if (!meta || !meta->isConsistent() || meta->total != probe.total || meta->etag != probe.etag)
        return std::nullopt;
    if (meta->segments() != ModelDownloader::splitSegments(probe.total))
        return std::nullopt;
    if (meta->bootID && *meta->bootID != QString::fromLatin1(QSysInfo::bootUniqueId()))
        return std::nullopt;
    if (part.size() < meta->leastFileSize() || part.size() > meta->total)
        return std::nullopt;
    return meta;
}

DownloadMeta DownloadRun::begin(const Probe &probe, PartFile &part) const
{
    if (auto meta = resumable(probe, part)) {
        requireSpace(part, probe.total);
        return *std::move(meta);
    }
    PartFile::removeRecord(m_job.to);
    part.clear();
    const auto segments = probe.givesRanges ? ModelDownloader::splitSegments(probe.total)
                                            : QList<ByteRange>{{0, probe.total - 1}};
    DownloadMeta meta = DownloadMeta::fresh(probe.etag, segments);
    try {
        requireSpace(part, probe.total);
    } catch (const DownloadError &) {
        part.remove();
        throw;
    }
    return meta;
}

void DownloadRun::requireSpace(const PartFile &part, qint64 total) const
{
    const qint64 needed = total - part.allocated();
    const QStorageInfo disk(QFileInfo(m_job.to).path());
    if (disk.isValid() && disk.bytesAvailable() < needed)
        throw DownloadError::notEnoughSpace(needed, disk.bytesAvailable());
}

void DownloadRun::fetch(const Probe &probe, PartFile &part, DownloadState &state)
{
    state.save(DownloadState::Bytes::WithTheSystem);
    try {
        fetchMissing(probe, part, state);
    } catch (...) {
        state.save(DownloadState::Bytes::WithTheSystem);
        if (part.flush())
            state.save(DownloadState::Bytes::OnTheDisk);
        throw;
    }
}

void DownloadRun::fetchMissing(const Probe &probe, PartFile &part, DownloadState &state)
{
    const auto answer = probe.givesRanges ? SegmentStream::Answer::Range : SegmentStream::Answer::WholeFile;
    const QDeadlineTimer latestEnd(longestDownload);
    std::vector<std::unique_ptr<Transfer>> transfers;
    std::vector<SegmentStream *> streams;
    for (qsizetype i = 0; i < state.meta().segmentCount(); ++i) {
        if (state.meta().missing(i).length() == 0)
            continue;
        auto stream =
            std::make_unique<SegmentStream>(m_job.from, answer, i, part, state, m_job.options.idleTimeout);
        streams.push_back(stream.get());
        transfers.push_back(std::move(stream));
    }
    m_session.run(transfers, m_job.stop, [&] {
        std::ranges::for_each(streams, &SegmentStream::flush);
        state.report();
        if (latestEnd.hasExpired())
            throw DownloadError::truncated(state.meta().totalWritten(), state.meta().total);
    });
}

void DownloadRun::complete(PartFile &part, qint64 total) const
{
    if (part.size() != total)
        throw DownloadError::truncated(part.size(), total);
    if (!ModelDownloader::hasMagic(PartFile::pathFor(m_job.to), m_job.expectedMagic)) {
        PartFile::removeRecord(m_job.to);
        part.remove();
        throw DownloadError::corruptFile();
    }
    // Before it has its name, so that a file of that name is complete even after a power failure.
    if (!part.flush())
        throw DownloadError::notWritable(QFileInfo(m_job.to).path());
    part.moveTo(m_job.to);
    PartFile::removeRecord(m_job.to);
}

} // namespace orvane

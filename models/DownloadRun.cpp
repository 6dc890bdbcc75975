#include "models/DownloadRun.h"

#include "base/system/Loopback.h"
#include "models/DiskCheckpoint.h"
#include "models/DownloadError.h"
#include "models/NetworkChanges.h"
#include "models/PartFile.h"
#include "models/SegmentStream.h"
#include "models/SystemProxy.h"

#include <QDeadlineTimer>
#include <QFileInfo>
#include <QStorageInfo>
#include <QSysInfo>

#include <algorithm>
#include <vector>

using namespace std::chrono_literals;

namespace orvane {

namespace {

constexpr auto maxDuration = 24h;
/// Names are found a moment after there is a network.
constexpr auto settlingTime = 15s;
constexpr std::chrono::milliseconds settlingInterval = 1s;
/// For a system that does not tell of its networks.
constexpr std::chrono::milliseconds blindInterval = 1min;

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

QString thisBoot()
{
    return QString::fromLatin1(QSysInfo::bootUniqueId());
}

} // namespace

DownloadRun::DownloadRun(Job job) : m_job(std::move(job)) {}

void DownloadRun::run()
{
    try {
        download();
    } catch (...) {
        if (m_job.discard.stop_requested())
            PartFile::discard(m_job.to);
        throw;
    }
}

void DownloadRun::download()
{
    throwIfCancelled(m_job.stop);
    Probe found = probeWhenConnected();
    PartFile part(PartFile::pathFor(m_job.to));
    try {
        fetch(found, part);
    } catch (const RangesDiffer &) {
        found.givesRanges = false; // one answer is one file
        fetch(found, part);
    }
    complete(part, found.total);
}

DownloadRun::Probe DownloadRun::probeWhenConnected()
{
    QDeadlineTimer settled(0);
    for (;;) {
        const NetworkChanges changes;
        const bool wasConnected = NetworkChanges::isConnected();
        try {
            return probe();
        } catch (const DownloadError &error) {
            if (error.kind() != DownloadError::Kind::ConnectionFailed || isLoopback(m_job.from.host()) ||
                (wasConnected && settled.hasExpired()))
                throw;
        }
        m_job.report({.isWaitingForNetwork = true});
        m_session.waitUntilReadable(changes.descriptor(), wasConnected ? settlingInterval : blindInterval,
                                    m_job.stop);
        if (!wasConnected)
            settled.setRemainingTime(settlingTime);
    }
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
    const auto fits = [&](const DownloadMeta &meta) {
        return meta.isConsistent() && meta.total == probe.total && meta.etag == probe.etag &&
               meta.segments() == splitSegments(probe.total) &&
               meta.bootID.value_or(thisBoot()) == thisBoot() && part.size() >= meta.minFileSize() &&
               part.size() <= meta.total;
    };
    if (!probe.givesRanges)
        return std::nullopt;
    for (const QString &record : {PartFile::metaPathFor(m_job.to), PartFile::checkpointPathFor(m_job.to)}) {
        if (auto meta = DownloadMeta::fromFile(record); meta && fits(*meta))
            return meta;
    }
    return std::nullopt;
}

DownloadMeta DownloadRun::begin(const Probe &probe, PartFile &part) const
{
    if (auto meta = resumable(probe, part)) {
        requireSpace(part, probe.total);
        return *std::move(meta);
    }
    PartFile::removeRecords(m_job.to);
    part.clear();
    const auto segments =
        probe.givesRanges ? splitSegments(probe.total) : QList<ByteRange>{{0, probe.total - 1}};
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
    // Some file systems do not know and say 0; a full one will refuse the first byte.
    if (disk.isValid() && disk.bytesAvailable() > 0 && disk.bytesAvailable() < needed)
        throw DownloadError::notEnoughSpace(needed, disk.bytesAvailable());
}

void DownloadRun::fetch(const Probe &probe, PartFile &part)
{
    DownloadState state(begin(probe, part), PartFile::metaPathFor(m_job.to), m_job.report);
    DiskCheckpoint checkpoint(part, PartFile::checkpointPathFor(m_job.to), m_job.options.checkpointInterval);
    state.save(DownloadState::Bytes::WithTheSystem);
    try {
        fetchMissing(probe, part, state, checkpoint);
    } catch (const RangesDiffer &) {
        throw;
    } catch (...) {
        if (m_job.discard.stop_requested())
            part.clear(); // the disk need not take what will be deleted
        else
            keep(part, state, checkpoint);
        throw;
    }
}

void DownloadRun::keep(PartFile &part, DownloadState &state, DiskCheckpoint &checkpoint) const
{
    state.save(DownloadState::Bytes::WithTheSystem);
    checkpoint.finish();
    // A full disk may have no room for the record: then the checkpoint is all that a power failure leaves.
    if (part.flush() && state.save(DownloadState::Bytes::OnTheDisk))
        QFile::remove(PartFile::checkpointPathFor(m_job.to));
}

void DownloadRun::fetchMissing(const Probe &probe, PartFile &part, DownloadState &state,
                               DiskCheckpoint &checkpoint)
{
    const auto answer = probe.givesRanges ? SegmentStream::Answer::Range : SegmentStream::Answer::WholeFile;
    const QDeadlineTimer latestEnd(maxDuration);
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
        checkpoint.offer(state.meta());
        if (latestEnd.hasExpired())
            throw DownloadError::truncated(state.meta().totalWritten(), state.meta().total);
    });
}

void DownloadRun::complete(PartFile &part, qint64 total) const
{
    if (part.size() != total)
        throw DownloadError::truncated(part.size(), total);
    if (!part.beginsWith(m_job.expectedMagic)) {
        PartFile::removeRecords(m_job.to);
        part.remove();
        throw DownloadError::corruptFile();
    }
    // Before it has its name, so that a file of that name is complete even after a power failure.
    if (!part.flush())
        throw DownloadError::notWritable(QFileInfo(m_job.to).path());
    part.moveTo(m_job.to);
    PartFile::removeRecords(m_job.to);
}

} // namespace orvane

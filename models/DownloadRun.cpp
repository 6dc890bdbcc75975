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
#include <cerrno>
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

/// How many answers have to disagree with what is there before it is given up: the mirrors behind one address
/// may differ, and one of them has the file that was begun.
constexpr int maxDoubts = 5;

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
    found = confirmed(found, part);
    for (int doubts = 0;;) {
        try {
            fetch(found, part);
            complete(part, found.total);
            return;
        } catch (const RangesDiffer &) {
            found.givesRanges = ++doubts < maxDoubts; // one answer is one file
        }
    }
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
            if (error.kind() != DownloadError::Kind::HostUnreachable || isLoopback(m_job.from.host()) ||
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

DownloadRun::Probe DownloadRun::confirmed(Probe found, const PartFile &part)
{
    const std::optional<DownloadMeta> there = kept(part);
    for (int doubts = 1; there && !continues(found, *there) && doubts < maxDoubts; ++doubts)
        found = probe();
    return found;
}

std::optional<DownloadMeta> DownloadRun::kept(const PartFile &part) const
{
    const auto isTrusted = [&](const DownloadMeta &meta) {
        return meta.isConsistent() && meta.isOfWholeFile() &&
               meta.bootID.value_or(thisBoot()) == thisBoot() && part.size() >= meta.minFileSize() &&
               part.size() <= meta.total;
    };
    for (const QString &record : {PartFile::metaPathFor(m_job.to), PartFile::checkpointPathFor(m_job.to)}) {
        if (auto meta = DownloadMeta::fromFile(record); meta && isTrusted(*meta))
            return meta;
    }
    return std::nullopt;
}

bool DownloadRun::continues(const Probe &probe, const DownloadMeta &kept)
{
    return probe.givesRanges && kept.total == probe.total && kept.etag == probe.etag;
}

DownloadMeta DownloadRun::begin(const Probe &probe, PartFile &part) const
{
    std::optional<DownloadMeta> there = kept(part);
    try {
        requireSpace(part, probe.total);
    } catch (const DownloadError &) {
        if (!there)
            part.remove();
        throw;
    }
    // Without ranges it stays until the whole file comes.
    if (there && (continues(probe, *there) || (!probe.givesRanges && there->total == probe.total)))
        return *std::move(there);
    PartFile::removeRecords(m_job.to);
    part.clear();
    return DownloadMeta::fresh(probe.etag, probe.givesRanges ? splitSegments(probe.total)
                                                             : QList<ByteRange>{{0, probe.total - 1}});
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
        if (probe.givesRanges)
            fetchMissing(part, state, checkpoint);
        else
            fetchWhole(part, state, checkpoint);
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

void DownloadRun::fetchMissing(PartFile &part, DownloadState &state, DiskCheckpoint &checkpoint)
{
    std::vector<std::unique_ptr<SegmentStream>> streams;
    for (qsizetype i = 0; i < state.meta().segmentCount(); ++i) {
        if (state.meta().missing(i).length() == 0)
            continue;
        streams.push_back(
            std::make_unique<SegmentStream>(m_job.from, i, part, state, m_job.options.idleTimeout));
    }
    transfer(std::move(streams), state, [&] { checkpoint.offer(state.meta()); });
}

void DownloadRun::fetchWhole(PartFile &part, DownloadState &state, DiskCheckpoint &checkpoint)
{
    bool comes = false;
    const auto beginAnew = [&](const std::optional<QString> &etag) {
        PartFile::removeRecords(m_job.to);
        part.clear();
        state.beginAnew(etag);
        comes = true;
    };
    std::vector<std::unique_ptr<SegmentStream>> streams;
    streams.push_back(
        std::make_unique<SegmentStream>(m_job.from, beginAnew, part, state, m_job.options.idleTimeout));
    transfer(std::move(streams), state, [&] {
        if (comes) // a checkpoint of what was there before would be taken for one of what comes
            checkpoint.offer(state.meta());
    });
}

void DownloadRun::transfer(std::vector<std::unique_ptr<SegmentStream>> streams, DownloadState &state,
                           const std::function<void()> &afterRound)
{
    const QDeadlineTimer latestEnd(maxDuration);
    std::vector<SegmentStream *> flushed;
    std::vector<std::unique_ptr<Transfer>> transfers;
    for (auto &stream : streams) {
        flushed.push_back(stream.get());
        transfers.push_back(std::move(stream));
    }
    m_session.run(transfers, m_job.stop, [&] {
        std::ranges::for_each(flushed, &SegmentStream::flush);
        state.report();
        afterRound();
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
        throw DownloadError::notWritable(QFileInfo(m_job.to).path(), errno);
    part.moveTo(m_job.to);
    PartFile::removeRecords(m_job.to);
}

} // namespace orvane

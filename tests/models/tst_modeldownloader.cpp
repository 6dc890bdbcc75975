#include "models/ModelDownloader.h"
#include "tests/models/DownloadOutcome.h"
#include "tests/support/FaultServer.h"
#include "tests/support/Rows.h"

#include <QElapsedTimer>
#include <QTemporaryDir>

#include <numeric>

using namespace Qt::StringLiterals;
using namespace orvane;
using namespace orvane::test;

using Kind = DownloadError::Kind;
using Request = FaultServer::Request;
using Answer = FaultServer::Answer;

namespace {

const DownloadOptions impatient{.probeTimeout = std::chrono::milliseconds(400),
                                .idleTimeout = std::chrono::milliseconds(400)};

/// What several connections may hold in the network when they break off.
constexpr qint64 underWay = 8 * mebibyte;

/// Two segments.
const QByteArray &twoSegments()
{
    static const QByteArray content = modelContent(33 * mebibyte + 7, "GGUF");
    return content;
}

DownloadMeta metaOf(const QList<qint64> &written)
{
    DownloadMeta meta = DownloadMeta::fresh(u"v1"_s, splitSegments(twoSegments().size()));
    meta.written = written;
    return meta;
}

qint64 bodyBytes(const QList<FaultServer::Served> &served)
{
    return std::accumulate(served.begin(), served.end(), qint64(0),
                           [](qint64 sum, const FaultServer::Served &one) { return sum + one.sent; });
}

FaultServer::Rule always(const Answer &answer)
{
    return [answer](const Request &) { return answer; };
}

/// The rule for the requests for segments, or for all but the first of them.
FaultServer::Rule toSegments(const Answer &given, qint64 from = 0)
{
    return [=](const Request &request) {
        const bool isMeant = request.range && !request.isProbe() && request.range->start >= from;
        return isMeant ? given : Answer();
    };
}

} // namespace

class TestModelDownloader : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { m_folder = std::make_unique<QTemporaryDir>(); }

    void fetchesInSegments_data()
    {
        const Rows<qint64, int> row("size", "segments");
        row("one", 20 * mebibyte, 1);
        row("four", 130 * mebibyte + 1, 4);
    }

    void fetchesInSegments()
    {
        QFETCH(const qint64, size);
        QFETCH(const int, segments);
        FaultServer server(modelContent(size, "GGUF"));
        put(destination(), "an older model");
        const auto outcome = fetchWhole(server);
        QCOMPARE(outcome.progress.last().totalBytes, size);
        QCOMPARE(outcome.progress.last().receivedBytes, size);
        QVERIFY(std::ranges::is_sorted(outcome.progress, {}, &DownloadProgress::receivedBytes));
        QVERIFY(outcome.progress.size() <= 1001);

        const auto served = server.takeServed();
        QCOMPARE(served.size(), segments + 1);
        QVERIFY(bodyBytes(served) <= size + 1);
    }

    void failsAndResumes_data()
    {
        const Rows<FaultServer::Rule, Kind, QString, bool> row("rule", "kind", "said", "resumes");
        const qint64 size = twoSegments().size();
        const QByteArray tooMuch(size, 'x');
        row("redirect to nowhere", always({.status = 302, .body = ""}), Kind::BadStatus, u" 302 "_s, false);
        row("redirects in a circle", always({.status = 302, .location = "/model.bin", .body = ""}),
            Kind::ConnectionFailed, u"по кругу"_s, false);
        row("size unknown", always({.givesLength = false, .ignoresRange = true}), Kind::BadServerAnswer,
            u"размер"_s, false);
        row("segment dropped", toSegments({.dropAfter = 12 * mebibyte}), Kind::Truncated,
            u" из %1 байт"_s.arg(size), true);
        row("segment stalls", toSegments({.stallAfter = 12 * mebibyte}), Kind::ConnectionFailed,
            u"перестал отвечать"_s, true);
        row("segment refused", toSegments({.status = 503, .body = "busy"}, 1), Kind::BadStatus, u" 503 "_s,
            false);
        row("another range", toSegments({.contentRange = "bytes 1-17301507/" + QByteArray::number(size)}),
            Kind::FileChanged, {}, false);
        row("too much, unreported", toSegments({.body = tooMuch, .givesLength = false}), Kind::FileChanged,
            {}, false);
    }

    void failsAndResumes()
    {
        QFETCH(const FaultServer::Rule, rule);
        QFETCH(const Kind, kind);
        QFETCH(const QString, said);
        QFETCH(const bool, resumes);
        FaultServer server(twoSegments());
        server.setRule(rule);
        ModelDownloader downloader(impatient);
        const auto failed = finish(startDownload(downloader, server.url(), destination()));
        QCOMPARE(failed.failure, kind);
        QVERIFY2(failed.description.contains(said), qPrintable(failed.description));
        QVERIFY(!QFile::exists(destination()));

        server.setRule({});
        fetchWhole(server);
        const qint64 twice = bodyBytes(server.takeServed()) - server.content().size();
        QVERIFY2(!resumes || twice < underWay, qPrintable(QString::number(twice)));
    }

    void fetchesInOneStream_data()
    {
        const Rows<FaultServer::Rule> row("rule");
        row("mirrors differ in the entity tag", toSegments({.etag = "\"v2\""}, 1));
        row("mirrors differ in ranges", toSegments({.ignoresRange = true}));
        row("no ranges", always({.ignoresRange = true}));
    }

    void fetchesInOneStream()
    {
        QFETCH(const FaultServer::Rule, rule);
        FaultServer server(twoSegments());
        server.setRule(rule);
        fetchWhole(server);
        // The first answer was dropped at its headers: only what the network had taken by then was sent.
        const auto served = server.takeServed();
        if (served.size() == 2)
            QVERIFY(bodyBytes(served) - server.content().size() < underWay);
    }

    void keepsWhatIsThere_data()
    {
        const Rows<FaultServer::Rule> row("rule");
        const auto firstOfAll = [](int count, const Answer &given) {
            return [=, left = count](const Request &) mutable { return left-- > 0 ? given : Answer(); };
        };
        const auto firstSegment = [](const Answer &given) {
            return [=, isSpoilt = false](const Request &request) mutable {
                return request.isProbe() || std::exchange(isSpoilt, true) ? Answer() : given;
            };
        };
        row("a mirror of another tag is asked first", firstOfAll(2, {.etag = "\"v2\""}));
        row("a mirror without ranges is asked first", firstOfAll(1, {.ignoresRange = true}));
        row("a segment of another tag", firstSegment({.etag = "\"v2\""}));
        row("the whole file for a segment", firstSegment({.ignoresRange = true}));
        row("the whole file is announced and does not come", [](const Request &request) {
            return request.range ? Answer{.ignoresRange = true} : Answer{.status = 503, .body = "busy"};
        });
    }

    void keepsWhatIsThere()
    {
        QFETCH(const FaultServer::Rule, rule);
        FaultServer server(twoSegments());
        const DownloadMeta meta = metaOf({12 * mebibyte, 12 * mebibyte});
        put(record(), meta.toJson());
        put(part(), twoSegments().first(meta.minFileSize()));
        server.setRule(rule);
        ModelDownloader downloader;
        if (finish(startDownload(downloader, server.url(), destination())).failure) {
            QCOMPARE(DownloadMeta::fromJson(contentOf(record())), meta);
            server.setRule({});
            fetchWhole(server);
        }
        QVERIFY(contentOf(destination()) == server.content());
        qint64 ranges = 0;
        for (const auto &one : server.takeServed())
            ranges += one.status == 206 && one.isTrue ? one.sent : 0;
        QVERIFY2(ranges < server.content().size() - 24 * mebibyte + underWay,
                 qPrintable(QString::number(ranges)));
    }

    void oneStreamResumes()
    {
        FaultServer server(twoSegments());
        server.setRule(always({.ignoresRange = true, .dropAfter = 30 * mebibyte}));
        ModelDownloader downloader;
        QCOMPARE(finish(startDownload(downloader, server.url(), destination())).failure, Kind::Truncated);
        server.setRule({});
        server.takeServed();
        fetchWhole(server);
        QVERIFY(bodyBytes(server.takeServed()) < 3 * mebibyte + underWay);
    }

    void discardsRecord_data()
    {
        const Rows<QByteArray, qint64> rows("text", "partSize");
        const qint64 size = twoSegments().size();
        const DownloadMeta good = metaOf({1000, 1000});
        const auto row = [&](const char *name, const std::function<void(DownloadMeta &)> &spoil) {
            DownloadMeta meta = good;
            spoil(meta);
            rows(name, meta.toJson(), size);
        };
        row("fewer counts than segments", [](DownloadMeta &meta) { meta.written.removeLast(); });
        row("huge",
            [](DownloadMeta &meta) { meta.ends[1] = meta.written[1] = std::numeric_limits<qint64>::max(); });
        row("a gap between segments", [](DownloadMeta &meta) { meta.ends[0] -= 500; });
        row("another file", [](DownloadMeta &meta) { meta.etag = u"v0"_s; });
        row("power failed meanwhile", [](DownloadMeta &meta) { meta.bootID = u"another start"_s; });
        rows("cut off", good.toJson().chopped(5), size);
        rows("partial file too short", good.toJson(), good.starts[1] + 999);
        rows("partial file too long", good.toJson(), size + 1);
    }

    void discardsRecord()
    {
        QFETCH(const QByteArray, text);
        QFETCH(const qint64, partSize);
        FaultServer server(twoSegments());
        put(record(), text);
        put(part(), QByteArray(partSize, 'x')); // would show in the file if it were resumed
        fetchWhole(server);
    }

    void resumesFromRecord()
    {
        FaultServer server(twoSegments());
        DownloadMeta meta = metaOf({splitSegments(twoSegments().size())[0].length(), 7 * mebibyte});
        put(record(), meta.toJson());
        put(part(), twoSegments().first(meta.minFileSize()));
        // The same tag, in the two forms servers write it.
        server.setRule(
            [](const Request &request) { return request.isProbe() ? Answer{.etag = "W/\"v1\""} : Answer{}; });
        const auto outcome = fetchWhole(server);
        QVERIFY(outcome.progress.first().fraction() > 0.7);
        const auto served = server.takeServed();
        QCOMPARE(served.size(), 2);
        QCOMPARE(served.last().request.range->start, meta.starts[1] + 7 * mebibyte);
    }

    void resumesAfterAPowerFailure()
    {
        FaultServer server(twoSegments());
        server.setRule(toSegments({.stallAfter = 8 * mebibyte}));
        ModelDownloader downloader({.checkpointInterval = std::chrono::milliseconds(50)});
        std::stop_source stop;
        const auto running = startDownload(downloader, server.url(), destination(), stop.get_token());
        const auto checkpoint = [this] { return DownloadMeta::fromFile(part() + u".synced"_s); };
        QTRY_COMPARE(checkpoint().value_or(DownloadMeta()).totalWritten(), 16 * mebibyte);

        // What a disk has afterwards: perhaps a newer record, of bytes that were in memory only.
        const QTemporaryDir disk;
        const QString copy = disk.filePath(u"model.gguf"_s);
        QVERIFY(QFile::copy(part(), copy + u".part"_s));
        QVERIFY(QFile::copy(part() + u".synced"_s, copy + u".part.synced"_s));
        DownloadMeta newer = *checkpoint();
        newer.bootID = u"an earlier start of the system"_s;
        newer.written[0] += mebibyte;
        put(copy + u".part.meta"_s, newer.toJson());
        stop.request_stop();
        finish(running);

        server.setRule({});
        server.takeServed();
        fetchWhole(server, copy);
        QVERIFY(bodyBytes(server.takeServed()) <= server.content().size() - 16 * mebibyte + 1);
    }

    void overlongAnswerCostsNoEarlierBytes()
    {
        FaultServer server(twoSegments());
        const DownloadMeta meta = metaOf({5 * mebibyte, 7 * mebibyte});
        put(record(), meta.toJson());
        put(part(), twoSegments().first(meta.minFileSize()));
        server.setRule(toSegments({.more = "and more", .givesLength = false}));
        ModelDownloader downloader;
        QCOMPARE(finish(startDownload(downloader, server.url(), destination())).failure, Kind::FileChanged);
        QCOMPARE(DownloadMeta::fromJson(contentOf(record())), meta);

        server.setRule({});
        fetchWhole(server);
    }

    void stopKeepsWhatIsThere()
    {
        FaultServer server(twoSegments());
        server.setRule(toSegments({.stallAfter = 8 * mebibyte}));
        ModelDownloader downloader;
        std::stop_source stop;
        const auto running = startDownload(downloader, server.url(), destination(), stop.get_token());
        QTRY_VERIFY(running->fraction() > 0.48);
        // Nobody else writes the file meanwhile.
        ModelDownloader second;
        const auto refused = finish(startDownload(second, server.url(), destination()));
        QCOMPARE(refused.failure, Kind::AlreadyRunning);
        QVERIFY(!running->hasEnded);
        QTRY_COMPARE(running->progress.last().bytesPerSecond, 0.0); // nothing comes any more

        QElapsedTimer since;
        since.start();
        stop.request_stop();
        QVERIFY(finish(running).wasCancelled);
        QVERIFY2(since.elapsed() < 2000, qPrintable(QString::number(since.elapsed())));
        const auto meta = DownloadMeta::fromJson(contentOf(record()));
        QVERIFY(meta && meta->isConsistent());
        QCOMPARE(meta->totalWritten(), 16 * mebibyte);
        QVERIFY(!meta->bootID); // all of it is on the disk

        server.setRule({});
        server.takeServed();
        fetchWhole(server);
        QVERIFY(bodyBytes(server.takeServed()) <= server.content().size() - 16 * mebibyte + 1);
    }

    void folderThatCannotBeWritten()
    {
        FaultServer server(modelContent(1000, "GGUF"));
        put(m_folder->filePath(u"file"_s), "in the way");
        ModelDownloader downloader;
        const QString folder = m_folder->filePath(u"file/models"_s);
        const auto outcome = finish(startDownload(downloader, server.url(), folder + u"/model.gguf"_s));
        QCOMPARE(outcome.failure, Kind::NotWritable);
        QVERIFY2(outcome.description.contains(folder), qPrintable(outcome.description));
        fetchWhole(server, m_folder->filePath(u"not/there/yet/model.gguf"_s));
    }

private:
    [[nodiscard]] QString destination() const { return m_folder->filePath(u"model.gguf"_s); }
    [[nodiscard]] QString part() const { return destination() + u".part"_s; }
    [[nodiscard]] QString record() const { return part() + u".meta"_s; }

    /// Succeeds, and leaves nothing beside the file.
    DownloadOutcome fetchWhole(FaultServer &server, const QString &to) const
    {
        ModelDownloader downloader;
        const auto outcome = finish(startDownload(downloader, server.url(), to));
        [&] {
            QVERIFY2(outcome.succeeded(), qPrintable(outcome.description));
            QVERIFY(contentOf(to) == server.content());
            QCOMPARE(QFileInfo(to).dir().entryList(QDir::Files), QStringList{QFileInfo(to).fileName()});
        }();
        return outcome;
    }
    DownloadOutcome fetchWhole(FaultServer &server) const { return fetchWhole(server, destination()); }

    std::unique_ptr<QTemporaryDir> m_folder;
};

QTEST_GUILESS_MAIN(TestModelDownloader)
#include "tst_modeldownloader.moc"

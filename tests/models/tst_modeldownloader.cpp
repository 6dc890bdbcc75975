#include "models/ModelDownloader.h"
#include "tests/models/DownloadOutcome.h"
#include "tests/support/FaultServer.h"

#include <QElapsedTimer>
#include <QProcess>
#include <QTemporaryDir>

#include <numeric>

using namespace Qt::StringLiterals;
using namespace orvane;
using namespace orvane::test;

using Kind = DownloadError::Kind;
using Request = FaultServer::Request;
using Answer = FaultServer::Answer;

Q_DECLARE_METATYPE(orvane::test::FaultServer::Rule)
Q_DECLARE_METATYPE(orvane::DownloadError::Kind)

namespace {

constexpr qint64 mebibyte = 1024 * 1024;
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

qint64 bodyBytes(const QList<FaultServer::Served> &served)
{
    return std::accumulate(served.begin(), served.end(), qint64(0),
                           [](qint64 sum, const FaultServer::Served &one) { return sum + one.sent; });
}

/// The rule for the requests for segments.
FaultServer::Rule toSegments(const std::function<void(const Request &, Answer &)> &change)
{
    return [change](const Request &request) {
        Answer answer;
        if (request.range && !request.isProbe())
            change(request, answer);
        return answer;
    };
}

void write(const QString &path, const QByteArray &content)
{
    QFile file(path);
    QVERIFY(file.open(QFile::WriteOnly));
    QCOMPARE(file.write(content), content.size());
}

} // namespace

class TestModelDownloader : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { m_folder = std::make_unique<QTemporaryDir>(); }

    void splitsByLimit_data();
    void splitsByLimit();
    void fetchesInSegments_data();
    void fetchesInSegments();
    void failsAndResumes_data();
    void failsAndResumes();
    void oneStreamWhenMirrorsDiffer_data();
    void oneStreamWhenMirrorsDiffer();
    void serverWithoutRanges();
    void discardsRecord_data();
    void discardsRecord();
    void resumesFromRecord();
    void resumesAfterAPowerFailure();
    void overlongAnswerCostsNoEarlierBytes();
    void writesOnlyOnce();
    void stopKeepsWhatIsThere();
    void folderThatCannotBeWritten();

private:
    [[nodiscard]] QString destination() const { return m_folder->filePath(u"model.gguf"_s); }
    [[nodiscard]] QString part() const { return destination() + u".part"_s; }
    [[nodiscard]] QString record() const { return part() + u".meta"_s; }
    [[nodiscard]] QStringList files() const
    {
        return QDir(m_folder->path()).entryList(QDir::Files, QDir::Name);
    }

    std::unique_ptr<QTemporaryDir> m_folder;
};

void TestModelDownloader::splitsByLimit_data()
{
    QTest::addColumn<qint64>("total");
    QTest::addColumn<QList<qint64>>("lengths");

    QTest::newRow("one byte") << qint64(1) << QList<qint64>{1};
    QTest::newRow("below 32 MiB") << 32 * mebibyte - 1 << QList<qint64>{32 * mebibyte - 1};
    QTest::newRow("32 MiB") << 32 * mebibyte << QList<qint64>{16 * mebibyte, 16 * mebibyte};
    QTest::newRow("below 512 MiB") << 512 * mebibyte - 1
                                   << QList<qint64>{128 * mebibyte - 1, 128 * mebibyte - 1,
                                                    128 * mebibyte - 1, 128 * mebibyte + 2};
    QTest::newRow("512 MiB") << 512 * mebibyte
                             << QList<qint64>{89478485, 89478485, 89478485, 89478485, 89478485, 89478487};
}

void TestModelDownloader::splitsByLimit()
{
    QFETCH(const qint64, total);
    QFETCH(const QList<qint64>, lengths);

    QList<qint64> found;
    qint64 next = 0;
    for (const ByteRange &range : splitSegments(total)) {
        QCOMPARE(range.start, next);
        found.append(range.length());
        next = range.end + 1;
    }
    QCOMPARE(found, lengths);
    QCOMPARE(next, total);
}

void TestModelDownloader::fetchesInSegments_data()
{
    QTest::addColumn<qint64>("size");
    QTest::addColumn<int>("segments");

    QTest::newRow("one") << 20 * mebibyte << 1;
    QTest::newRow("two") << 33 * mebibyte + 7 << 2;
    QTest::newRow("four") << 130 * mebibyte + 1 << 4;
}

void TestModelDownloader::fetchesInSegments()
{
    QFETCH(const qint64, size);
    QFETCH(const int, segments);

    FaultServer server(modelContent(size, "GGUF"));
    write(destination(), "an older model");
    ModelDownloader downloader;
    const auto outcome = finish(startDownload(downloader, server.url(), destination()));

    QVERIFY2(outcome.succeeded(), qPrintable(outcome.description));
    QVERIFY(fileContent(destination()) == server.content());
    QCOMPARE(files(), QStringList{u"model.gguf"_s});
    QCOMPARE(outcome.last.totalBytes, size);
    QCOMPARE(outcome.last.receivedBytes, size);

    const auto served = server.served();
    QCOMPARE(served.size(), segments + 1);
    QVERIFY(bodyBytes(served) <= size + 1);

    QCOMPARE(outcome.progress.last(), 1.0);
    QVERIFY(std::ranges::is_sorted(outcome.progress));
    QVERIFY(outcome.progress.size() <= 1001);
    QVERIFY(!outcome.reportedElsewhere);
}

void TestModelDownloader::failsAndResumes_data()
{
    QTest::addColumn<FaultServer::Rule>("rule");
    QTest::addColumn<Kind>("kind");
    QTest::addColumn<QString>("said");
    QTest::addColumn<bool>("resumes");

    const auto always = [](const Answer &answer) { return [answer](const Request &) { return answer; }; };
    const auto row = [](const char *name, const FaultServer::Rule &rule, Kind kind, const QString &said,
                        bool resumes = false) { QTest::newRow(name) << rule << kind << said << resumes; };
    const QByteArray page = QByteArray("<html>").leftJustified(twoSegments().size(), ' ');

    row("no such file", always({.status = 404, .body = "gone"}), Kind::BadStatus, u" 404 "_s);
    row("redirect to nowhere", always({.status = 302, .body = ""}), Kind::BadStatus, u" 302 "_s);
    row("redirects in a circle", always({.status = 302, .location = "/model.bin", .body = ""}),
        Kind::ConnectionFailed, u"по кругу"_s);
    row("size unknown", always({.givesLength = false, .ignoresRange = true}), Kind::BadServerAnswer,
        u"размер"_s);
    row("size unclear", always({.contentRange = "bytes 0-0/*"}), Kind::BadServerAnswer, u"размер"_s);
    row("larger than any disk", always({.contentRange = "bytes 0-0/9223372036854775807"}),
        Kind::NotEnoughSpace, u"9223372036855 МБ"_s);
    row("a page of the right size", always({.etag = "", .body = page, .ignoresRange = true}),
        Kind::CorruptFile, u"не является корректной моделью"_s);

    row("segment dropped", toSegments([](auto &, Answer &answer) { answer.dropAfter = 12 * mebibyte; }),
        Kind::Truncated, u" из %1 байт"_s.arg(twoSegments().size()), true);
    row("segment stalls", toSegments([](auto &, Answer &answer) { answer.stallAfter = 12 * mebibyte; }),
        Kind::ConnectionFailed, u"перестал отвечать"_s, true);
    row("segment refused", toSegments([](auto &request, Answer &answer) {
            if (request.range->start > 0)
                answer = {.status = 503, .body = "busy"};
        }),
        Kind::BadStatus, u" 503 "_s);
    row("another range", toSegments([](auto &request, Answer &answer) {
            const qint64 start = request.range->start;
            answer.contentRange = QStringLiteral("bytes %1-%2/%3")
                                      .arg(start + 1)
                                      .arg(request.range->end + 1)
                                      .arg(twoSegments().size())
                                      .toLatin1();
        }),
        Kind::FileChanged, QString());
    row("too much, untold", toSegments([](auto &request, Answer &answer) {
            answer.givesLength = false;
            answer.body = QByteArray(request.range->length() + 1, 'x');
        }),
        Kind::FileChanged, QString());
}

void TestModelDownloader::failsAndResumes()
{
    QFETCH(const FaultServer::Rule, rule);
    QFETCH(const Kind, kind);
    QFETCH(const QString, said);
    QFETCH(const bool, resumes);

    FaultServer server(twoSegments());
    server.setRule(rule);
    ModelDownloader downloader(impatient);
    const auto failed = finish(startDownload(downloader, server.url(), destination()));
    QVERIFY(failed.failure.has_value());
    QCOMPARE(*failed.failure, kind);
    QVERIFY2(failed.description.contains(said), qPrintable(failed.description));
    QVERIFY(!QFile::exists(destination()));
    if (kind == Kind::CorruptFile)
        QVERIFY(files().isEmpty());
    const qint64 sentBefore = bodyBytes(server.served());

    server.setRule({});
    server.forgetServed();
    const auto outcome = finish(startDownload(downloader, server.url(), destination()));
    QVERIFY2(outcome.succeeded(), qPrintable(outcome.description));
    QVERIFY(fileContent(destination()) == server.content());
    QCOMPARE(files(), QStringList{u"model.gguf"_s});
    if (resumes) {
        const qint64 twice = bodyBytes(server.served()) + sentBefore - server.content().size();
        QVERIFY2(twice < underWay, qPrintable(QString::number(twice)));
    }
}

void TestModelDownloader::oneStreamWhenMirrorsDiffer_data()
{
    QTest::addColumn<FaultServer::Rule>("rule");
    QTest::newRow("another entity tag") << toSegments([](auto &request, Answer &answer) {
        if (request.range->start > 0)
            answer.etag = "\"v2\"";
    });
    QTest::newRow("no ranges") << toSegments([](auto &, Answer &answer) { answer.ignoresRange = true; });
}

void TestModelDownloader::oneStreamWhenMirrorsDiffer()
{
    QFETCH(const FaultServer::Rule, rule);

    FaultServer server(twoSegments());
    server.setRule(rule);
    ModelDownloader downloader;
    const auto outcome = finish(startDownload(downloader, server.url(), destination()));
    QVERIFY2(outcome.succeeded(), qPrintable(outcome.description));
    QVERIFY(fileContent(destination()) == server.content());
    QCOMPARE(files(), QStringList{u"model.gguf"_s});
}

void TestModelDownloader::serverWithoutRanges()
{
    FaultServer server(twoSegments());
    server.setRule([](const Request &) { return Answer{.ignoresRange = true}; });
    ModelDownloader downloader;
    const auto outcome = finish(startDownload(downloader, server.url(), destination()));
    QVERIFY2(outcome.succeeded(), qPrintable(outcome.description));
    QVERIFY(fileContent(destination()) == server.content());

    const auto served = server.served();
    QCOMPARE(served.size(), 2);
    // The first request was dropped at its headers: only what the network had taken by then was sent.
    QVERIFY2(bodyBytes(served) - server.content().size() < underWay,
             qPrintable(QString::number(bodyBytes(served))));
}

void TestModelDownloader::discardsRecord_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<qint64>("partSize");

    const qint64 size = twoSegments().size();
    const auto good = [size] {
        DownloadMeta meta = DownloadMeta::fresh(u"v1"_s, splitSegments(size));
        meta.written = {1000, 1000};
        return meta;
    };
    const auto row = [size](const char *name, const DownloadMeta &meta, qint64 partSize = -1) {
        QTest::newRow(name) << meta.toJson() << (partSize < 0 ? size : partSize);
    };

    QTest::newRow("garbage") << QByteArray("\xff\0{]", 4) << size;
    QTest::newRow("cut off") << good().toJson().chopped(5) << size;
    QTest::newRow("fractions") << good().toJson().replace("1000", "1000.5") << size;

    DownloadMeta meta = good();
    meta.written.removeLast();
    row("fewer counts than segments", meta);
    meta = good();
    meta.ends[1] = std::numeric_limits<qint64>::max();
    meta.written[1] = std::numeric_limits<qint64>::max();
    row("huge", meta);
    meta = good();
    meta.ends[0] -= 500;
    row("a gap between segments", meta);
    meta = good();
    meta.etag = u"v0"_s;
    row("another file", meta);
    meta = good();
    meta.bootID = u"another start of the system"_s;
    row("power failed meanwhile", meta);
    row("partial file too short", good(), good().starts[1] + 999);
    row("partial file too long", good(), size + 1);
}

void TestModelDownloader::discardsRecord()
{
    QFETCH(const QByteArray, text);
    QFETCH(const qint64, partSize);

    FaultServer server(twoSegments());
    write(record(), text);
    write(part(), QByteArray(partSize, 'x')); // would show in the file if it were resumed
    ModelDownloader downloader;
    const auto outcome = finish(startDownload(downloader, server.url(), destination()));
    QVERIFY2(outcome.succeeded(), qPrintable(outcome.description));
    QVERIFY(fileContent(destination()) == server.content());
}

void TestModelDownloader::resumesFromRecord()
{
    FaultServer server(twoSegments());
    DownloadMeta meta = DownloadMeta::fresh(u"v1"_s, splitSegments(twoSegments().size()));
    meta.written = {meta.segment(0).length(), 7 * mebibyte};
    write(record(), meta.toJson());
    write(part(), twoSegments().first(meta.minFileSize()));

    // The same tag, in the two forms servers write it.
    server.setRule(
        [](const Request &request) { return request.isProbe() ? Answer{.etag = "W/\"v1\""} : Answer{}; });
    ModelDownloader downloader;
    const auto outcome = finish(startDownload(downloader, server.url(), destination()));
    QVERIFY2(outcome.succeeded(), qPrintable(outcome.description));
    QVERIFY(fileContent(destination()) == server.content());
    QVERIFY(outcome.progress.first() > 0.7);
    const auto served = server.served();
    QCOMPARE(served.size(), 2);
    QCOMPARE(served.last().request.range->start, meta.starts[1] + 7 * mebibyte);
}

void TestModelDownloader::resumesAfterAPowerFailure()
{
    FaultServer server(twoSegments());
    server.setRule(toSegments([](auto &, Answer &answer) { answer.stallAfter = 8 * mebibyte; }));
    ModelDownloader downloader({.checkpointInterval = std::chrono::milliseconds(50)});
    std::stop_source stop;
    const auto running = startDownload(downloader, server.url(), destination(), "GGUF", stop.get_token());
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
    write(copy + u".part.meta"_s, newer.toJson());
    stop.request_stop();
    finish(running);

    server.setRule({});
    server.forgetServed();
    QVERIFY(finish(startDownload(downloader, server.url(), copy)).succeeded());
    QVERIFY(fileContent(copy) == server.content());
    QVERIFY(bodyBytes(server.served()) <= server.content().size() - 16 * mebibyte + 1);
    QCOMPARE(QDir(disk.path()).entryList(QDir::Files), QStringList{u"model.gguf"_s});
}

void TestModelDownloader::overlongAnswerCostsNoEarlierBytes()
{
    FaultServer server(twoSegments());
    DownloadMeta meta = DownloadMeta::fresh(u"v1"_s, splitSegments(twoSegments().size()));
    meta.written = {5 * mebibyte, 7 * mebibyte};
    write(record(), meta.toJson());
    write(part(), twoSegments().first(meta.minFileSize()));

    server.setRule(toSegments([](auto &, Answer &answer) {
        answer.more = "and more";
        answer.givesLength = false;
    }));
    ModelDownloader downloader;
    QCOMPARE(finish(startDownload(downloader, server.url(), destination())).failure, Kind::FileChanged);
    QCOMPARE(DownloadMeta::fromJson(fileContent(record())), meta);

    server.setRule({});
    QVERIFY(finish(startDownload(downloader, server.url(), destination())).succeeded());
    QVERIFY(fileContent(destination()) == server.content());
}

void TestModelDownloader::writesOnlyOnce()
{
    FaultServer server(twoSegments());
    server.setRule(toSegments([](auto &, Answer &answer) { answer.stallAfter = mebibyte; }));
    ModelDownloader first;
    std::stop_source stop;
    const auto running = startDownload(first, server.url(), destination(), "GGUF", stop.get_token());
    QTRY_VERIFY(!running->progress.isEmpty());

    ModelDownloader second;
    const auto refused = finish(startDownload(second, server.url(), destination()));
    QCOMPARE(refused.failure, Kind::AlreadyRunning);
    QProcess process;
    process.start(QStringLiteral(DOWNLOAD_FILE), {server.url().toString(), destination(), u"GGUF"_s});
    QVERIFY(QTest::qWaitFor([&] { return process.state() == QProcess::NotRunning; }, 30'000));
    QCOMPARE(process.exitCode(), 1);
    const QByteArray told = process.readAllStandardOutput();
    QVERIFY2(told.contains("\"kind\":" + QByteArray::number(static_cast<int>(Kind::AlreadyRunning))),
             told.constData());

    QVERIFY(!running->hasEnded);
    stop.request_stop();
    QVERIFY(finish(running).wasCancelled);
    server.setRule({});
    QVERIFY(finish(startDownload(second, server.url(), destination())).succeeded());
    QVERIFY(fileContent(destination()) == server.content());
    QCOMPARE(files(), QStringList{u"model.gguf"_s});
}

void TestModelDownloader::stopKeepsWhatIsThere()
{
    FaultServer server(twoSegments());
    server.setRule(toSegments([](auto &, Answer &answer) { answer.stallAfter = 8 * mebibyte; }));
    ModelDownloader downloader;
    std::stop_source stop;
    const auto running = startDownload(downloader, server.url(), destination(), "GGUF", stop.get_token());
    QTRY_VERIFY(!running->progress.isEmpty() && running->progress.last() > 0.48);
    QElapsedTimer since;
    since.start();
    stop.request_stop();
    const auto stopped = finish(running);
    QVERIFY(stopped.wasCancelled);
    QVERIFY2(since.elapsed() < 2000, qPrintable(QString::number(since.elapsed())));

    const auto meta = DownloadMeta::fromJson(fileContent(record()));
    QVERIFY(meta && meta->isConsistent());
    QCOMPARE(meta->totalWritten(), 16 * mebibyte);
    QVERIFY(!meta->bootID); // all of it is on the disk

    server.setRule({});
    server.forgetServed();
    QVERIFY(finish(startDownload(downloader, server.url(), destination())).succeeded());
    QVERIFY(fileContent(destination()) == server.content());
    QVERIFY(bodyBytes(server.served()) <= server.content().size() - 16 * mebibyte + 1);
}

void TestModelDownloader::folderThatCannotBeWritten()
{
    FaultServer server(modelContent(1000, "GGUF"));
    write(m_folder->filePath(u"file"_s), "in the way");
    ModelDownloader downloader;
    const QString folder = m_folder->filePath(u"file/models"_s);
    const auto outcome = finish(startDownload(downloader, server.url(), folder + u"/model.gguf"_s));
    QCOMPARE(outcome.failure, Kind::NotWritable);
    QVERIFY2(outcome.description.contains(folder), qPrintable(outcome.description));

    const QString deep = m_folder->filePath(u"not/there/yet/model.gguf"_s);
    QVERIFY(finish(startDownload(downloader, server.url(), deep)).succeeded());
}

QTEST_GUILESS_MAIN(TestModelDownloader)
#include "tst_modeldownloader.moc"

// Downloads files with child processes and spoils that again and again: soak_downloads [COUNT [SEED]]

#include "tests/support/FaultServer.h"

#include <QCoreApplication>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include <cstdio>
#include <memory>
#include <random>
#include <thread>
#include <vector>

using namespace Qt::StringLiterals;
using namespace orvane;
using namespace orvane::test;

using Request = FaultServer::Request;
using Answer = FaultServer::Answer;

namespace {

constexpr qint64 mebibyte = 1024 * 1024;
constexpr qint64 bytesPerSecond = 6 * mebibyte;
/// What may be on its way when a connection ends; the server counts it as sent.
constexpr qint64 underWay = 2 * mebibyte;
constexpr int laneCount = 4;

/// Downloads files of its own one after the other with a child process, and spoils that again and again.
class Lane
{
public:
    Lane(int interruptions, quint32 seed)
        : m_left(interruptions),
          m_random(seed),
          m_server(modelContent(33 * mebibyte + seed % 1000, "GGUF", seed))
    {}

    void run()
    {
        while (m_left > 0 && m_fault.isEmpty()) {
            --m_left;
            if (chance(50))
                kill();
            else
                spoil();
            check();
        }
        m_server.setRule([](const Request &) { return Answer(); });
        QProcess child;
        start(child);
        child.waitForFinished(60'000);
        check();
        if (m_finished == 0 || child.exitCode() != 0)
            fail(u"the last download did not end well: "_s + QString::fromUtf8(child.readAll()));
    }

    /// Empty when all went well.
    [[nodiscard]] QString fault() const { return m_fault; }
    [[nodiscard]] int finished() const { return m_finished; }
    [[nodiscard]] qint64 maxFetchedTwice() const { return m_maxFetchedTwice; }

private:
    [[nodiscard]] bool chance(int percent) { return below(100) < percent; }
    [[nodiscard]] qint64 below(qint64 limit)
    {
        return std::uniform_int_distribution<qint64>(0, limit - 1)(m_random);
    }
    void fail(const QString &why)
    {
        if (m_fault.isEmpty())
            m_fault = why + u"; the last interruptions: "_s + m_history.join(u", ");
    }

    void remember(const QString &interruption, QProcess &child)
    {
        m_history.append(interruption + u' ' + QString::fromUtf8(child.readAllStandardOutput().trimmed()));
        if (m_history.size() > 6)
            m_history.removeFirst();
    }

    void start(QProcess &child)
    {
        child.start(QStringLiteral(DOWNLOAD_FILE),
                    {m_server.url().toString(), destination(), u"GGUF"_s, u"300"_s});
        child.waitForStarted();
    }

    void kill()
    {
        m_server.setRule([](const Request &) { return Answer{.bytesPerSecond = bytesPerSecond}; });
        QProcess child;
        start(child);
        child.waitForFinished(static_cast<int>(below(2500)));
        child.kill();
        child.waitForFinished();
        remember(u"kill"_s, child);
    }

    void spoil()
    {
        const auto [name, answer] = fault(below(10));
        const bool wholeAttempt = answer.ignoresRange;
        const bool losesTrust = wholeAttempt || !answer.givesLength; // the file is begun anew, or nearly
        const qint64 spoiltHalf = below(2);
        const qint64 half = m_server.content().size() / 2;
        m_server.setRule([=](const Request &request) {
            const bool isSpoilt =
                request.range && !request.isProbe() && request.range->start / half == spoiltHalf;
            Answer given = isSpoilt || wholeAttempt ? answer : Answer();
            given.bytesPerSecond = wholeAttempt ? 0 : bytesPerSecond;
            return given;
        });
        QProcess child;
        start(child);
        if (!child.waitForFinished(60'000))
            fail(u"the download does not end after: "_s + name);
        remember(name, child);
        if (losesTrust) {
            m_reached.clear();
            m_server.takeServed();
        }
    }

    [[nodiscard]] std::pair<QString, Answer> fault(qint64 which)
    {
        const QByteArray page = QByteArray("<html>").leftJustified(m_server.content().size(), '-');
        switch (which) {
        case 0:
            return {u"404"_s, {.status = 404, .body = "gone"}};
        case 1:
            return {u"500"_s, {.status = 500, .body = "sorry"}};
        case 2:
            return {u"416"_s, {.status = 416, .body = ""}};
        case 3:
            return {u"another range"_s, {.contentRange = "bytes 3-4/5"}};
        case 4:
            return {u"another entity tag"_s, {.etag = "\"v2\""}};
        case 5:
            return {u"too much"_s, {.more = "and more", .givesLength = false}};
        case 6:
            return {u"page of the right size"_s, {.etag = "", .body = page, .ignoresRange = true}};
        case 7:
            return {u"stall"_s, {.stallAfter = below(17 * mebibyte)}};
        default:
            return {u"drop"_s, {.dropAfter = below(17 * mebibyte)}};
        }
    }

    void check()
    {
        for (const FaultServer::Served &one : m_server.takeServed())
            account(one);
        if (!QFile::exists(destination()))
            return;
        QFile file(destination());
        if (!file.open(QFile::ReadOnly) || file.readAll() != m_server.content())
            fail(u"a wrong file has the final name"_s);
        file.remove();
        m_reached.clear();
        ++m_finished;
    }

    /// What a request begins with and an earlier one had brought is fetched twice.
    void account(const FaultServer::Served &one)
    {
        const std::optional<ByteRange> &range = one.request.range;
        if (one.status != 206 || !range || one.request.isProbe() || !one.isTrue)
            return;
        const qint64 segment = range->start / (m_server.content().size() / 2);
        qint64 &reached = m_reached[segment];
        const qint64 twice = reached - range->start;
        m_maxFetchedTwice = std::max(m_maxFetchedTwice, twice);
        if (twice > bytesPerSecond + underWay)
            fail(u"%1 bytes of segment %2 fetched twice"_s.arg(twice).arg(segment));
        reached = range->start + one.sent;
    }

    [[nodiscard]] QString destination() const { return m_folder.filePath(u"model.gguf"_s); }

    int m_left;
    std::mt19937 m_random;
    FaultServer m_server;
    const QTemporaryDir m_folder;
    /// By segment: where the last true bytes ended that the server has sent.
    QMap<qint64, qint64> m_reached;
    /// The last few interruptions and what the process said of them.
    QStringList m_history;
    QString m_fault;
    int m_finished = 0;
    qint64 m_maxFetchedTwice = 0;
};

} // namespace

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    const int interruptions = arguments.value(1, u"500"_s).toInt();
    const quint32 seed = arguments.value(2, u"1"_s).toUInt();
    std::vector<std::unique_ptr<Lane>> lanes;
    std::vector<std::thread> threads;
    for (quint32 i = 0; i < laneCount; ++i) {
        lanes.push_back(
            std::make_unique<Lane>((interruptions + laneCount - 1) / laneCount, seed * laneCount + i));
        threads.emplace_back([lane = lanes.back().get()] { lane->run(); });
    }
    int finished = 0;
    qint64 maxTwice = 0;
    QStringList faults;
    for (size_t i = 0; i < lanes.size(); ++i) {
        threads[i].join();
        finished += lanes[i]->finished();
        maxTwice = std::max(maxTwice, lanes[i]->maxFetchedTwice());
        if (!lanes[i]->fault().isEmpty())
            faults.append(lanes[i]->fault());
    }
    std::printf(
        "%d interruptions, %d files finished, at most %.1f MiB of a segment fetched twice (%.1f MiB/s)\n%s\n",
        interruptions, finished, static_cast<double>(maxTwice) / mebibyte,
        static_cast<double>(bytesPerSecond) / mebibyte, qUtf8Printable(faults.join(u'\n')));
    return faults.isEmpty() ? 0 : 1;
}

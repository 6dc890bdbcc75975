#include "tests/models/DownloadOutcome.h"
#include "tests/support/FaultServer.h"

#include <QCryptographicHash>
#include <QProcess>
#include <QTemporaryDir>

using namespace Qt::StringLiterals;
using namespace orvane;
using namespace orvane::test;

namespace {

bool reports(const QByteArray &output, DownloadError::Kind kind)
{
    return output.contains("\"kind\":" + QByteArray::number(static_cast<int>(kind)) + ',');
}

} // namespace

/// Downloads of another process, on a disk and a network that a script takes away from it and gives back.
class TestDownloadSystem : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { m_folder = std::make_unique<QTemporaryDir>(); }

    void diskFull()
    {
        const QStringList ownMounts = {u"--mount"_s};
        FaultServer server(m_content);
        if (run("mount -t tmpfs none \"$dir\"", server.url(), ownMounts).exitCode != 0)
            QSKIP("this system lets users make no small disk of their own (unshare, mount)");

        // Room for less than the file: refused before the first byte, and nothing is left in the folder.
        const auto refused = run("mount -t tmpfs -o size=30m none \"$dir\"\n"
                                 "\"$download\" \"$url\" \"$dir/model\" GGUF; ls -A \"$dir\"",
                                 server.url(), ownMounts);
        QVERIFY2(reports(refused.output, DownloadError::Kind::NotEnoughSpace), refused.output.constData());
        QVERIFY2(refused.output.trimmed().endsWith('}'), refused.output.constData());
        QCOMPARE(server.takeServed().size(), 1);

        // Another program takes the room away while it runs; then gives it back.
        server.setRule(
            [](const FaultServer::Request &) { return FaultServer::Answer{.bytesPerSecond = 8 * mebibyte}; });
        const auto full = run("mount -t tmpfs -o size=44m none \"$dir\"\n"
                              "\"$download\" \"$url\" \"$dir/model\" GGUF & running=$!\n"
                              "until [ -s \"$dir/model.part\" ]; do sleep 0.02; done\n"
                              "head -c 20m /dev/zero > \"$dir/filler\"\n"
                              "wait $running; echo \"first: $?\"; rm \"$dir/filler\"\n"
                              "[ -s \"$dir/model.part.meta\" ] && echo kept && ls -A \"$dir\"\n"
                              "\"$download\" \"$url\" \"$dir/model\" GGUF; echo \"second: $?\"\n"
                              "sha256sum < \"$dir/model\"; ls -A \"$dir\"",
                              server.url(), ownMounts);
        QVERIFY2(reports(full.output, DownloadError::Kind::NotEnoughSpace), full.output.constData());
        QVERIFY2(full.output.contains("first: 1\nkept\nmodel.part\nmodel.part.meta\n{"),
                 full.output.constData());
        QVERIFY2(full.output.contains("second: 0\n"), full.output.constData());
        const QByteArray sum = QCryptographicHash::hash(m_content, QCryptographicHash::Sha256).toHex();
        QVERIFY2(full.output.endsWith(sum + "  -\nmodel\n"), full.output.constData());
        qint64 sent = 0;
        for (const auto &one : server.takeServed())
            sent += one.sent;
        // No more is fetched twice than two segments bring in a second.
        QVERIFY2(sent < m_content.size() + 17 * mebibyte, qPrintable(QString::number(sent)));
    }

    void writeRefused()
    {
        FaultServer server(m_content);
        // The limit is in blocks of 512 bytes; the second of the two segments begins at 20 MiB.
        const auto result = run("( ulimit -f 61440; \"$download\" \"$url\" \"$dir/model\" GGUF )\n"
                                "ls -A \"$dir\"; \"$download\" \"$url\" \"$dir/model\" GGUF",
                                server.url());
        QVERIFY2(reports(result.output, DownloadError::Kind::NotWritable), result.output.constData());
        QVERIFY2(result.output.contains("\nmodel.part\nmodel.part.meta\n"), result.output.constData());
        QCOMPARE(result.exitCode, 0);
        QVERIFY(contentOf(m_folder->filePath(u"model"_s)) == m_content);
    }

    void waitsForANetwork()
    {
        const QStringList ownNetwork = {u"--net"_s};
        if (run("ip link set lo up", {}, ownNetwork).exitCode != 0)
            QSKIP("this system lets users make no network of their own (unshare, ip)");
        // A server that answers, and be it with a refusal, is waited for by nobody.
        const auto refused = run("ip link set lo up; ip address add 198.51.100.7/32 dev lo\n"
                                 "\"$download\" \"$url\" \"$dir/model\" GGUF",
                                 QUrl(u"http://198.51.100.7:8080/model"_s), ownNetwork);
        QVERIFY2(reports(refused.output, DownloadError::Kind::ConnectionFailed), refused.output.constData());

        const auto result = run("ip link set lo up; mkdir \"$dir/served\"\n"
                                "printf 'GGUF and more' > \"$dir/served/model\"\n"
                                "python3 -m http.server 8080 --directory \"$dir/served\" >/dev/null 2>&1 &\n"
                                "server=$!\n"
                                "until grep -q ':1F90 ' /proc/net/tcp; do sleep 0.05; done\n"
                                "\"$download\" \"$url\" \"$dir/model\" GGUF 2> \"$dir/said\" & running=$!\n"
                                "until grep -q waiting \"$dir/said\"; do sleep 0.05; done\n"
                                "ip address add 198.51.100.7/32 dev lo; ip route add default dev lo\n"
                                "wait $running; echo \"ended: $?\"; kill $server; cat \"$dir/model\"",
                                QUrl(u"http://198.51.100.7:8080/model"_s), ownNetwork);
        QVERIFY2(result.output.endsWith("ended: 0\nGGUF and more"), result.output.constData());
    }

private:
    struct Result
    {
        int exitCode;
        QByteArray output;
    };

    /// Runs a shell script with $url, $dir and $download set, in namespaces of its own when `unshare` has
    /// options for them.
    [[nodiscard]] Result run(const char *script, const QUrl &url, const QStringList &unshare = {}) const
    {
        QProcess process;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(u"url"_s, url.toString());
        environment.insert(u"dir"_s, m_folder->path());
        environment.insert(u"download"_s, QStringLiteral(DOWNLOAD_FILE));
        process.setProcessEnvironment(environment);
        process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        QStringList command = {u"sh"_s, u"-c"_s, QString::fromUtf8(script)};
        if (!unshare.isEmpty())
            command = QStringList{u"unshare"_s, u"--user"_s, u"--map-root-user"_s} + unshare + command;
        process.start(command.takeFirst(), command);
        if (!process.waitForFinished(60'000))
            process.kill();
        process.waitForFinished();
        return {process.exitCode(), process.readAllStandardOutput()};
    }

    const QByteArray m_content = modelContent(40 * mebibyte, "GGUF");
    std::unique_ptr<QTemporaryDir> m_folder;
};

QTEST_GUILESS_MAIN(TestDownloadSystem)
#include "tst_downloadsystem.moc"

#include "tests/models/DownloadOutcome.h"
#include "tests/models/Script.h"
#include "tests/support/FaultServer.h"

#include <QCryptographicHash>
#include <QTemporaryDir>

using namespace Qt::StringLiterals;
using namespace orvane;
using namespace orvane::test;

namespace {

constexpr qint64 mebibyte = 1024 * 1024;

bool reports(const QByteArray &output, DownloadError::Kind kind)
{
    return output.contains("\"kind\":" + QByteArray::number(static_cast<int>(kind)) + ',');
}

} // namespace

class TestDownloadDisk : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void fullInTheMiddle();
    void writeRefusedInTheMiddle();

private:
    const QByteArray m_content = modelContent(40 * mebibyte, "GGUF");
};

void TestDownloadDisk::fullInTheMiddle()
{
    const QStringList ownMounts = {u"--mount"_s};
    const QTemporaryDir folder;
    FaultServer server(m_content);
    if (runScript(u"mount -t tmpfs none \"$dir\""_s, server.url(), folder.path(), ownMounts).exitCode != 0)
        QSKIP("this system lets users make no small disk of their own (unshare, mount)");

    // Room for less than the file: refused before the first byte.
    const auto refused = runScript(u"mount -t tmpfs -o size=30m none \"$dir\"\n"
                                   "\"$download\" \"$url\" \"$dir/model\" GGUF; ls -A \"$dir\""_s,
                                   server.url(), folder.path(), ownMounts);
    QVERIFY2(reports(refused.output, DownloadError::Kind::NotEnoughSpace), refused.output.constData());
    QVERIFY2(refused.output.trimmed().endsWith('}'),
             refused.output.constData()); // nothing left in the folder
    QCOMPARE(server.served().size(), 1);

    // Another program takes the room away while it runs; then gives it back.
    server.setRule(
        [](const FaultServer::Request &) { return FaultServer::Answer{.bytesPerSecond = 8 * mebibyte}; });
    const auto full = runScript(u"mount -t tmpfs -o size=44m none \"$dir\"\n"
                                "\"$download\" \"$url\" \"$dir/model\" GGUF & running=$!\n"
                                "until [ -s \"$dir/model.part\" ]; do sleep 0.02; done\n"
                                "head -c 20m /dev/zero > \"$dir/filler\"\n"
                                "wait $running; echo \"first: $?\"; rm \"$dir/filler\"\n"
                                "[ -s \"$dir/model.part.meta\" ] && echo kept && ls -A \"$dir\"\n"
                                "\"$download\" \"$url\" \"$dir/model\" GGUF; echo \"second: $?\"\n"
                                "sha256sum < \"$dir/model\"; ls -A \"$dir\""_s,
                                server.url(), folder.path(), ownMounts);
    QVERIFY2(reports(full.output, DownloadError::Kind::NotEnoughSpace), full.output.constData());
    QVERIFY2(full.output.contains("first: 1\nkept\nmodel.part\nmodel.part.meta\n{"), full.output.constData());
    QVERIFY2(full.output.contains("second: 0\n"), full.output.constData());
    const QByteArray sum = QCryptographicHash::hash(m_content, QCryptographicHash::Sha256).toHex();
    QVERIFY2(full.output.endsWith(sum + "  -\nmodel\n"), full.output.constData());
    qint64 sent = 0;
    for (const auto &one : server.served())
        sent += one.sent;
    // No more is fetched twice than two segments bring in a second.
    QVERIFY2(sent < m_content.size() + 17 * mebibyte, qPrintable(QString::number(sent)));
}

void TestDownloadDisk::writeRefusedInTheMiddle()
{
    const QTemporaryDir folder;
    FaultServer server(m_content);
    // The limit is in blocks of 512 bytes; the second of the two segments begins at 20 MiB.
    const auto result = runScript(u"( ulimit -f 61440; \"$download\" \"$url\" \"$dir/model\" GGUF )\n"
                                  "ls -A \"$dir\"; \"$download\" \"$url\" \"$dir/model\" GGUF"_s,
                                  server.url(), folder.path());
    QVERIFY2(reports(result.output, DownloadError::Kind::NotWritable), result.output.constData());
    QVERIFY2(result.output.contains("\nmodel.part\nmodel.part.meta\n"), result.output.constData());
    QCOMPARE(result.exitCode, 0);
    QVERIFY(fileContent(folder.filePath(u"model"_s)) == m_content);
}

QTEST_GUILESS_MAIN(TestDownloadDisk)
#include "tst_downloaddisk.moc"

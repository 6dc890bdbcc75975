#include "tests/models/DownloadOutcome.h"
#include "tests/models/Script.h"
#include "tests/support/FaultServer.h"
#include "tests/support/Nginx.h"

#include <QNetworkProxyFactory>
#include <QProcess>
#include <QSslCertificate>
#include <QSslKey>
#include <QTcpServer>
#include <QTemporaryDir>

using namespace Qt::StringLiterals;
using namespace orvane;
using namespace orvane::test;

using Kind = DownloadError::Kind;
using Request = FaultServer::Request;
using Answer = FaultServer::Answer;

namespace {

constexpr qint64 mebibyte = 1024 * 1024;

FaultServer::Rule redirectTo(const QUrl &target)
{
    return [target](const Request &) {
        return Answer{.status = 302, .location = target.toEncoded(), .body = "moved"};
    };
}

} // namespace

class TestDownloadNetwork : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init() { m_folder = std::make_unique<QTemporaryDir>(); }

    void redirects_data();
    void redirects();
    void untrustedCertificate();
    void hostThatDoesNotExist();
    void goesThroughTheProxy();
    void waitsForANetwork();
    void realServer();

private:
    [[nodiscard]] QString destination() const { return m_folder->filePath(u"model.gguf"_s); }

    std::unique_ptr<QTemporaryDir> m_folder;
    QTemporaryDir m_keys;
    std::optional<QSslConfiguration> m_tls;
};

void TestDownloadNetwork::initTestCase()
{
    QProcess openssl;
    openssl.setWorkingDirectory(m_keys.path());
    openssl.start(u"openssl"_s, {u"req"_s, u"-x509"_s, u"-newkey"_s, u"rsa:2048"_s, u"-nodes"_s, u"-keyout"_s,
                                 u"key.pem"_s, u"-out"_s, u"cert.pem"_s, u"-days"_s, u"2"_s, u"-subj"_s,
                                 u"/CN=127.0.0.1"_s, u"-addext"_s, u"subjectAltName=IP:127.0.0.1"_s});
    QVERIFY(openssl.waitForFinished());
    QSslConfiguration tls;
    tls.setLocalCertificate(QSslCertificate(fileContent(m_keys.filePath(u"cert.pem"_s))));
    tls.setPrivateKey(QSslKey(fileContent(m_keys.filePath(u"key.pem"_s)), QSsl::Rsa));
    QVERIFY(!tls.privateKey().isNull());
    m_tls = tls;
}

void TestDownloadNetwork::redirects_data()
{
    QTest::addColumn<QList<bool>>("secure"); // each server on the way, the last one has the file
    QTest::addColumn<bool>("allowed");

    QTest::newRow("secure only") << QList{true} << true;
    QTest::newRow("plain to another host") << QList{false, false, false} << true;
    QTest::newRow("secure to secure") << QList{true, true} << true;
    QTest::newRow("plain, secure, plain") << QList{false, true, false} << false;
}

void TestDownloadNetwork::redirects()
{
    QFETCH(const QList<bool>, secure);
    QFETCH(const bool, allowed);
    qputenv("SSL_CERT_FILE", m_keys.filePath(u"cert.pem"_s).toUtf8());

    std::vector<std::unique_ptr<FaultServer>> servers;
    for (const bool isSecure : secure)
        servers.push_back(std::make_unique<FaultServer>(modelContent(34 * mebibyte, "GGUF"),
                                                        isSecure ? m_tls : std::nullopt));
    for (size_t i = 0; i + 1 < servers.size(); ++i)
        servers[i]->setRule(redirectTo(servers[i + 1]->url()));

    ModelDownloader downloader;
    const auto outcome = finish(startDownload(downloader, servers.front()->url(), destination()));
    qunsetenv("SSL_CERT_FILE");
    if (allowed) {
        QVERIFY2(outcome.succeeded(), qPrintable(outcome.description));
        QVERIFY(fileContent(destination()) == servers.back()->content());
        return;
    }
    QCOMPARE(outcome.failure, Kind::ConnectionFailed);
    QVERIFY2(outcome.description.contains(u"незащищённый"), qPrintable(outcome.description));
    QVERIFY(servers.back()->served().isEmpty());
}

void TestDownloadNetwork::untrustedCertificate()
{
    FaultServer server("GGUF", m_tls);
    ModelDownloader downloader;
    const auto outcome = finish(startDownload(downloader, server.url(), destination()));
    QCOMPARE(outcome.failure, Kind::ConnectionFailed);
    QVERIFY2(outcome.description.contains(u"защищённое"), qPrintable(outcome.description));
}

void TestDownloadNetwork::hostThatDoesNotExist()
{
    ModelDownloader downloader;
    const auto nowhere = finish(startDownload(downloader, QUrl(u"http://models.invalid/m"_s), destination()));
    QCOMPARE(nowhere.failure, Kind::ConnectionFailed);
    QVERIFY2(nowhere.description.contains(u"не найден"), qPrintable(nowhere.description));

    QTcpServer closed;
    closed.listen(QHostAddress::LocalHost);
    const QUrl refusing(u"http://127.0.0.1:%1/m"_s.arg(closed.serverPort()));
    closed.close();
    const auto refused = finish(startDownload(downloader, refusing, destination()));
    QCOMPARE(refused.failure, Kind::ConnectionFailed);
    QVERIFY2(refused.description.contains(u"соединиться"), qPrintable(refused.description));
}

void TestDownloadNetwork::goesThroughTheProxy()
{
    FaultServer proxy(modelContent(34 * mebibyte, "GGUF"));
    const QByteArray before = qgetenv("no_proxy");
    qunsetenv("no_proxy");
    qunsetenv("NO_PROXY");
    qputenv("http_proxy", proxy.url(QString()).toEncoded());

    ModelDownloader downloader;
    const QUrl far(u"http://models.invalid/model.bin"_s);
    const auto outcome = finish(startDownload(downloader, far, destination()));
    FaultServer near("GGUF near");
    const auto direct = finish(startDownload(downloader, near.url(), m_folder->filePath(u"near"_s)));
    qunsetenv("http_proxy");
    qputenv("no_proxy", before);

    QVERIFY2(outcome.succeeded(), qPrintable(outcome.description));
    QVERIFY(fileContent(destination()) == proxy.content());
    const auto served = proxy.served();
    QCOMPARE(served.size(), 3);
    for (const auto &one : served)
        QCOMPARE(one.request.path, far.toEncoded());
    QVERIFY2(direct.succeeded(), qPrintable(direct.description));
}

void TestDownloadNetwork::waitsForANetwork()
{
    const QStringList ownNetwork = {u"--net"_s};
    if (runScript(u"ip link set lo up"_s, {}, {}, ownNetwork).exitCode != 0)
        QSKIP("this system lets users make no network of their own (unshare, ip)");
    const auto result =
        runScript(u"ip link set lo up; mkdir \"$dir/served\"\n"
                  "printf 'GGUF and more' > \"$dir/served/model\"\n"
                  "\"$download\" \"$url\" \"$dir/model\" GGUF 2> \"$dir/said\" & running=$!\n"
                  "until grep -q waiting \"$dir/said\"; do sleep 0.05; done\n"
                  "ip address add 198.51.100.7/32 dev lo\n"
                  "python3 -m http.server 8080 --directory \"$dir/served\" >/dev/null 2>&1 &\n"
                  "ip route add default dev lo; wait $running; echo \"ended: $?\"; kill $!\n"
                  "cat \"$dir/model\""_s,
                  QUrl(u"http://198.51.100.7:8080/model"_s), m_folder->path(), ownNetwork);
    QVERIFY2(result.output.endsWith("ended: 0\nGGUF and more"), result.output.constData());
}

void TestDownloadNetwork::realServer()
{
    if (!Nginx::isInstalled())
        QSKIP("nginx is not installed");
    const QByteArray content = modelContent(130 * mebibyte + 3, "GGUF");
    const Nginx nginx;
    nginx.put(u"/model.bin"_s, content);

    // Stopped on the way, then resumed at full speed.
    ModelDownloader downloader;
    std::stop_source stop;
    const auto slow =
        startDownload(downloader, nginx.url(u"/slow/model.bin"_s), destination(), "GGUF", stop.get_token());
    QTRY_VERIFY_WITH_TIMEOUT(slow->hasEnded || slow->last.fraction() > 0.02, 60'000);
    QVERIFY2(!slow->hasEnded, qPrintable(slow->description));
    stop.request_stop();
    QVERIFY(finish(slow).wasCancelled);

    const auto outcome = finish(startDownload(downloader, nginx.url(u"/model.bin"_s), destination()));
    QVERIFY2(outcome.succeeded(), qPrintable(outcome.description));
    QVERIFY(outcome.progress.first() > 0.02);
    QVERIFY(fileContent(destination()) == content);

    const auto missing = finish(startDownload(downloader, nginx.url(u"/none"_s), destination()));
    QCOMPARE(missing.failure, Kind::BadStatus);
    QVERIFY(missing.description.contains(u"404"));
}

QTEST_GUILESS_MAIN(TestDownloadNetwork)
#include "tst_downloadnetwork.moc"

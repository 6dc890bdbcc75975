#include "tests/models/DownloadOutcome.h"
#include "tests/support/Certificate.h"
#include "tests/support/FaultServer.h"
#include "tests/support/Rows.h"

#include <QTemporaryDir>

using namespace Qt::StringLiterals;
using namespace orvane;
using namespace orvane::test;

using Kind = DownloadError::Kind;

class TestDownloadNetwork : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { m_folder = std::make_unique<QTemporaryDir>(); }

    void redirects_data()
    {
        // Whether each server on the way is secure; the last one has the file.
        const Rows<QList<bool>, bool> row("secure", "allowed");
        row("plain to another host", QList{false, false, false}, true);
        row("secure to secure", QList{true, true}, true);
        row("plain, secure, plain", QList{false, true, false}, false);
    }

    void redirects()
    {
        QFETCH(const QList<bool>, secure);
        QFETCH(const bool, allowed);
        std::vector<std::unique_ptr<FaultServer>> servers;
        for (const bool isSecure : secure)
            servers.push_back(std::make_unique<FaultServer>(modelContent(34 * mebibyte, "GGUF"),
                                                            isSecure ? std::optional(m_certificate.server())
                                                                     : std::nullopt));
        for (size_t i = 0; i + 1 < servers.size(); ++i) {
            servers[i]->setRule([location = servers[i + 1]->url().toEncoded()](const FaultServer::Request &) {
                return FaultServer::Answer{.status = 302, .location = location, .body = "moved"};
            });
        }

        qputenv("SSL_CERT_FILE", m_certificate.file().toUtf8());
        const auto outcome = fetch(servers.front()->url());
        qunsetenv("SSL_CERT_FILE");
        if (allowed) {
            QVERIFY2(outcome.succeeded(), qPrintable(outcome.description));
            QVERIFY(contentOf(destination()) == servers.back()->content());
            return;
        }
        QCOMPARE(outcome.failure, Kind::ConnectionFailed);
        QVERIFY2(outcome.description.contains(u"незащищённый"), qPrintable(outcome.description));
        QVERIFY(servers.back()->takeServed().isEmpty());
    }

    void noConnection()
    {
        const FaultServer untrusted("GGUF", m_certificate.server());
        const auto refused = fetch(untrusted.url());
        QCOMPARE(refused.failure, Kind::ConnectionFailed);
        QVERIFY2(refused.description.contains(u"защищённое"), qPrintable(refused.description));
        const auto nowhere = fetch(QUrl(u"http://models.invalid/m"_s));
        QCOMPARE(nowhere.failure, Kind::HostUnreachable);
        QVERIFY2(nowhere.description.contains(u"не найден"), qPrintable(nowhere.description));
    }

    void goesThroughTheProxy()
    {
        FaultServer proxy(modelContent(34 * mebibyte, "GGUF"));
        const QByteArray before = qgetenv("no_proxy");
        qunsetenv("no_proxy");
        qunsetenv("NO_PROXY");
        qputenv("http_proxy", proxy.url(QString()).toEncoded());
        const QUrl far(u"http://models.invalid/model.bin"_s);
        const auto outcome = fetch(far);
        const QByteArray fetched = contentOf(destination());
        const FaultServer near("GGUF near");
        const auto direct = fetch(near.url());
        qunsetenv("http_proxy");
        qputenv("no_proxy", before);

        QVERIFY2(outcome.succeeded(), qPrintable(outcome.description));
        QVERIFY(fetched == proxy.content());
        const auto served = proxy.takeServed();
        QCOMPARE(served.size(), 3);
        for (const auto &one : served)
            QCOMPARE(one.request.path, far.toEncoded());
        QVERIFY2(direct.succeeded(), qPrintable(direct.description));
    }

private:
    [[nodiscard]] QString destination() const { return m_folder->filePath(u"model.gguf"_s); }
    [[nodiscard]] DownloadOutcome fetch(const QUrl &from) const
    {
        ModelDownloader downloader;
        return finish(startDownload(downloader, from, destination()));
    }

    std::unique_ptr<QTemporaryDir> m_folder;
    const Certificate m_certificate;
};

QTEST_GUILESS_MAIN(TestDownloadNetwork)
#include "tst_downloadnetwork.moc"

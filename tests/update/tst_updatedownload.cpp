#include "base/Async.h"
#include "settings/UserDefaults.h"
#include "tests/update/FakePresenter.h"
#include "tests/update/RawServer.h"
#include "update/UpdateChecker.h"
#include "update/UpdateDownload.h"
#include "update/UpdateError.h"

#include <QDir>
#include <QFile>
#include <QHttpServer>
#include <QProcess>
#include <QSslCertificate>
#include <QSslConfiguration>
#include <QSslKey>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>
#include <sys/resource.h>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using namespace orvane;

namespace {

const QString failedTitle = u"Не удалось скачать обновление"_s;

// The test starts itself to be a process that may write no more than `limit` bytes into a file. Exit code 0
// when that is the failure.
int downloadToFullDisk(const QUrl &url, const QString &folder, rlim_t limit)
{
    std::signal(SIGXFSZ, SIG_IGN);
    const rlimit limits{.rlim_cur = limit, .rlim_max = limit};
    setrlimit(RLIMIT_FSIZE, &limits);
    const UpdateDownload download{.release = {.version = u"2"_s, .url = url},
                                  .folder = folder,
                                  .idleTimeout = 60s,
                                  .progress = [](double) {}};
    try {
        qWarning("downloaded: %s", qUtf8Printable(download.run({})));
        return 1;
    } catch (const UpdateError &error) {
        return error.kind() == UpdateError::Kind::NotWritable ? 0 : 2;
    }
}

QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QFile::ReadOnly) ? file.readAll() : QByteArray();
}

void put(const QString &path, const QByteArray &content)
{
    QFile file(path);
    QVERIFY(file.open(QFile::WriteOnly));
    file.write(content);
}

/// Larger than what the network and the file hold back.
QByteArray largeContent()
{
    QByteArray content;
    for (int number = 0; number < 300'000; ++number)
        content += QByteArray::number(number);
    return content;
}

} // namespace

class TestUpdateDownload : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void withProgress();
    void withoutLength();
    void throughTheOffer();
    void failures_data();
    void failures();
    void folderIsGone();
    void replacesALink();
    void leavesAFolder();
    void nameOfTheLastAddress();
    void nothingOpensIt();
    void neverFromSafeToUnsafe();
    void fullDisk();

private:
    void download(const QUrl &url);
    [[nodiscard]] QString file(const QString &name) const { return m_folder->filePath(name); }
    [[nodiscard]] QStringList files() const;

    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<UserDefaults> m_defaults;
    std::unique_ptr<FakePresenter> m_presenter;
    std::unique_ptr<RawServer> m_server;
    std::unique_ptr<UpdateChecker> m_checker;
    QStringList m_opened;
    bool m_canOpen = true;
};

void TestUpdateDownload::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    m_defaults = std::make_unique<UserDefaults>(u"settings.json"_s);
    m_presenter = std::make_unique<FakePresenter>();
    m_server = std::make_unique<RawServer>();
    m_opened.clear();
    m_canOpen = true;
    const auto open = [this](const QString &path) {
        m_opened << path;
        return m_canOpen;
    };
    m_checker = std::make_unique<UpdateChecker>(*m_defaults, *m_presenter, open, m_folder->path(),
                                                UpdateChecker::Options{.downloadIdleTimeout = 3s});
}

void TestUpdateDownload::cleanup()
{
    QVERIFY(!m_presenter->showsProgress);
}

void TestUpdateDownload::download(const QUrl &url)
{
    spawn(m_checker->downloadAndOpen({.version = u"2.0"_s, .url = url}));
    QVERIFY(m_checker->downloading());
    QTRY_VERIFY(!m_checker->downloading());
}

QStringList TestUpdateDownload::files() const
{
    return QDir(m_folder->path()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
}

void TestUpdateDownload::withProgress()
{
    const QByteArray content = largeContent();
    const QByteArray message = RawServer::message(200, content);
    const qsizetype half = content.size() / 2;
    m_server->answer = message.chopped(content.size() - half);
    m_server->then = RawServer::Then::Wait;
    const UpdateRelease release{.version = u"2"_s, .url = m_server->url(u"/dir/Orvane.deb"_s)};
    spawn(m_checker->downloadAndOpen(release));
    spawn(m_checker->downloadAndOpen(release)); // the first is running
    QTRY_COMPARE(m_checker->downloadProgress(), double(half) / double(content.size()));
    QVERIFY(m_checker->downloading() && m_presenter->showsProgress && m_opened.isEmpty());
    QVERIFY(!QFile::exists(file(u"Orvane.deb"_s)));

    m_server->goOn(message.last(content.size() - half));
    QTRY_VERIFY(!m_checker->downloading());
    QCOMPARE(m_presenter->progress.last(), 1.0);
    QVERIFY(m_presenter->notices.isEmpty());
    QCOMPARE(m_server->requests().size(), 1);
    QCOMPARE(m_opened, QStringList{file(u"Orvane.deb"_s)});
    QVERIFY(contentOf(m_opened.first()) == content);
    QCOMPARE(files(), QStringList{u"Orvane.deb"_s});
}

void TestUpdateDownload::withoutLength()
{
    const QByteArray content = largeContent();
    m_server->answer = "HTTP/1.1 200 OK\r\nConnection: close\r\n\r\n" + content;
    download(m_server->url(u"/a.deb"_s));
    QCOMPARE(m_opened, QStringList{file(u"a.deb"_s)});
    QVERIFY(contentOf(m_opened.first()) == content);
    QCOMPARE(m_presenter->progress, QList<double>{1.0});
}

void TestUpdateDownload::throughTheOffer()
{
    m_server->answer = RawServer::message(200, "package");
    m_presenter->choice = UpdatePresenter::Choice::Download;
    spawn(m_checker->offerDownload({.version = u"2.0"_s, .url = m_server->url()}));
    QTRY_COMPARE(m_opened, QStringList{file(u"Orvane-2.0.deb"_s)});
    QCOMPARE(contentOf(m_opened.first()), "package");
    QCOMPARE(QFile::permissions(m_opened.first()) & (QFile::ReadOther | QFile::WriteOther | QFile::ReadGroup),
             QFile::Permissions());
}

void TestUpdateDownload::failures_data()
{
    QTest::addColumn<QByteArray>("answer");
    QTest::addColumn<RawServer::Then>("then");
    QTest::addColumn<QString>("says");
    const auto closes = RawServer::Then::Close;
    const auto waits = RawServer::Then::Wait;
    const QString broke = u"прервалось"_s;
    const QByteArray body = largeContent();
    QTest::newRow("404") << RawServer::message(404, body) << closes << u"Сервер вернул код 404."_s;
    QTest::newRow("dropped in the middle") << RawServer::message(200, body).chopped(1) << closes << broke;
    QTest::newRow("nothing in it") << RawServer::message(200, {}) << closes << broke;
    QTest::newRow("silent in the middle")
        << RawServer::message(200, body).chopped(1) << waits << u"не отвечает"_s;
}

void TestUpdateDownload::failures()
{
    QFETCH(const QByteArray, answer);
    QFETCH(const RawServer::Then, then);
    QFETCH(const QString, says);
    put(file(u"a.deb"_s), "earlier");
    m_server->answer = answer;
    m_server->then = then;
    download(m_server->url(u"/a.deb"_s));
    QCOMPARE(m_presenter->notices.size(), 1);
    QCOMPARE(m_presenter->notices.first().first, failedTitle);
    QVERIFY2(m_presenter->notices.first().second.contains(says),
             qUtf8Printable(m_presenter->notices.first().second));
    QVERIFY(m_opened.isEmpty());
    QCOMPARE(files(), QStringList{u"a.deb"_s});
    QCOMPARE(contentOf(file(u"a.deb"_s)), "earlier");

    // And now it works.
    m_server->answer = RawServer::message(200, "package");
    m_server->then = RawServer::Then::Close;
    download(m_server->url(u"/a.deb"_s));
    QCOMPARE(contentOf(file(u"a.deb"_s)), "package");
}

void TestUpdateDownload::folderIsGone()
{
    m_server->answer = RawServer::message(200, "package");
    QVERIFY(QDir(m_folder->path()).removeRecursively());
    download(m_server->url(u"/a.deb"_s));
    QCOMPARE(m_presenter->notices.size(), 1);
    QVERIFY(m_presenter->notices.first().second.contains(m_folder->path()));
    QVERIFY(m_server->requests().isEmpty());
}

void TestUpdateDownload::replacesALink()
{
    const QTemporaryDir elsewhere;
    const QString precious = elsewhere.filePath(u"precious"_s);
    put(precious, "precious");
    QVERIFY(QFile::link(precious, file(u"a.deb"_s)));
    m_server->answer = RawServer::message(200, "package");
    download(m_server->url(u"/a.deb"_s));
    QCOMPARE(contentOf(precious), "precious");
    QCOMPARE(contentOf(file(u"a.deb"_s)), "package");
    QVERIFY(!QFileInfo(file(u"a.deb"_s)).isSymLink());
}

void TestUpdateDownload::leavesAFolder()
{
    QVERIFY(QDir().mkdir(file(u"a.deb"_s)));
    m_server->answer = RawServer::message(200, "package");
    download(m_server->url(u"/a.deb"_s));
    QCOMPARE(files(), QStringList{u"a.deb"_s});
    QCOMPARE(m_presenter->notices.size(), 1);
    QVERIFY(m_opened.isEmpty());
}

void TestUpdateDownload::nameOfTheLastAddress()
{
    RawServer behind;
    behind.answer = RawServer::message(200, "package");
    m_server->answer = RawServer::message(
        302, "moved", "Location: " + behind.url(u"/Orvane_2.deb?x=1"_s).toEncoded() + "\r\n");
    download(m_server->url(u"/latest"_s));
    QCOMPARE(m_opened, QStringList{file(u"Orvane_2.deb"_s)});
    QCOMPARE(contentOf(m_opened.first()), "package");
}

void TestUpdateDownload::nothingOpensIt()
{
    m_canOpen = false;
    m_server->answer = RawServer::message(200, "package");
    download(m_server->url(u"/a.deb"_s));
    QCOMPARE(m_presenter->notices.size(), 1);
    QVERIFY(m_presenter->notices.first().second.endsWith(file(u"a.deb"_s)));
    QCOMPARE(files(), QStringList{u"a.deb"_s});
}

void TestUpdateDownload::neverFromSafeToUnsafe()
{
    QProcess openssl;
    openssl.start(u"openssl"_s, {u"req"_s, u"-x509"_s, u"-newkey"_s, u"rsa:2048"_s, u"-nodes"_s, u"-subj"_s,
                                 u"/CN=test"_s, u"-addext"_s, u"subjectAltName=IP:127.0.0.1"_s, u"-keyout"_s,
                                 file(u"key.pem"_s), u"-out"_s, file(u"certificate.pem"_s)});
    if (!openssl.waitForFinished() || openssl.exitCode() != 0)
        QSKIP("openssl, which makes the certificate of a safe server, cannot be run");

    const QSslCertificate certificate(contentOf(file(u"certificate.pem"_s)));
    QSslConfiguration trusting = QSslConfiguration::defaultConfiguration();
    const QSslConfiguration before = trusting;
    trusting.addCaCertificate(certificate);

    QHttpServer safe;
    safe.sslSetup(certificate, QSslKey(contentOf(file(u"key.pem"_s)), QSsl::Rsa));
    m_server->answer = RawServer::message(200, "unsafe");
    const QByteArray unsafe = m_server->url(u"/b.deb"_s).toEncoded();
    safe.route(u"/moved.deb"_s, [unsafe] {
        QHttpServerResponse response(QHttpServerResponse::StatusCode::Found);
        response.setHeader("Location", unsafe);
        return response;
    });
    safe.route(u"/a.deb"_s, [] { return QHttpServerResponse("application/x", "safe"); });
    const QString address = u"https://127.0.0.1:%1"_s.arg(safe.listen(QHostAddress::LocalHost));

    download(QUrl(address + u"/a.deb"_s));
    QVERIFY2(m_opened.isEmpty(), "nobody vouches for the server yet");
    QSslConfiguration::setDefaultConfiguration(trusting);
    download(QUrl(address + u"/a.deb"_s));
    QCOMPARE(contentOf(file(u"a.deb"_s)), "safe");
    download(QUrl(address + u"/moved.deb"_s));
    QSslConfiguration::setDefaultConfiguration(before);

    QVERIFY(m_server->requests().isEmpty());
    QCOMPARE(m_presenter->notices.size(), 2);
    QCOMPARE(m_presenter->notices[0], m_presenter->notices[1]);
    QCOMPARE(m_opened.size(), 1);
}

void TestUpdateDownload::fullDisk()
{
    put(file(u"a.deb"_s), "earlier");
    m_server->answer = RawServer::message(200, QByteArray(100'001, 'x'));
    for (const QString &room : {u"1000"_s, u"100000"_s}) { // for the first pieces, for all but the end
        QProcess child;
        child.setProcessChannelMode(QProcess::ForwardedChannels);
        child.start(QCoreApplication::applicationFilePath(),
                    {u"--full-disk"_s, m_server->url(u"/a.deb"_s).toString(), m_folder->path(), room});
        QTRY_COMPARE_WITH_TIMEOUT(child.state(), QProcess::NotRunning, 60'000);
        QCOMPARE(child.exitStatus(), QProcess::NormalExit);
        QCOMPARE(child.exitCode(), 0);
        QCOMPARE(files(), QStringList{u"a.deb"_s});
        QCOMPARE(contentOf(file(u"a.deb"_s)), "earlier");
    }
    QCOMPARE(m_server->requests().size(), 2);
}

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() == 5 && arguments[1] == u"--full-disk"_s)
        return downloadToFullDisk(QUrl(arguments[2]), arguments[3], arguments[4].toULongLong());
    TestUpdateDownload test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_updatedownload.moc"

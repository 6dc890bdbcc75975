#include "base/Async.h"
#include "settings/UserDefaults.h"
#include "tests/support/Certificate.h"
#include "tests/support/Files.h"
#include "tests/support/FullDisk.h"
#include "tests/support/Rows.h"
#include "tests/update/FakePresenter.h"
#include "tests/update/RawServer.h"
#include "update/UpdateChecker.h"

#include <QDir>
#include <QHttpServer>
#include <QTemporaryDir>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using namespace orvane;
using namespace orvane::test;

namespace {

const QString failedTitle = u"Не удалось скачать обновление"_s;

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
    void init()
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

    void cleanup() { QVERIFY(!m_presenter->showsProgress); }

    void withProgress()
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

    void throughTheOffer()
    {
        m_server->answer = RawServer::message(200, "package");
        m_presenter->choose(UpdatePresenter::Choice::Download);
        spawn(m_checker->offerDownload({.version = u"2.0"_s, .url = m_server->url()}));
        QTRY_COMPARE(m_opened, QStringList{file(u"Orvane-2.0.deb"_s)});
        QCOMPARE(contentOf(m_opened.first()), "package");
        QCOMPARE(QFile::permissions(m_opened.first()) &
                     (QFile::ReadOther | QFile::WriteOther | QFile::ReadGroup),
                 QFile::Permissions());
    }

    void failures_data()
    {
        const Rows<QByteArray, RawServer::Then, QString> row("answer", "then", "says");
        const auto closes = RawServer::Then::Close;
        const auto waits = RawServer::Then::Wait;
        const QString broke = u"прервалось"_s;
        const QByteArray body = largeContent();
        row("404", RawServer::message(404, body), closes, u"Сервер вернул код 404."_s);
        row("dropped in the middle", RawServer::message(200, body).chopped(1), closes, broke);
        row("nothing in it", RawServer::message(200, {}), closes, broke);
        row("silent in the middle", RawServer::message(200, body).chopped(1), waits, u"не отвечает"_s);
    }

    void failures()
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

    void replacesALink()
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

    void cannotBeWritten()
    {
        QVERIFY(QDir().mkdir(file(u"a.deb"_s))); // a folder, which stays
        m_server->answer = RawServer::message(200, "package");
        download(m_server->url(u"/a.deb"_s));
        QCOMPARE(files(), QStringList{u"a.deb"_s});
        QVERIFY(QDir(m_folder->path()).removeRecursively());
        download(m_server->url(u"/a.deb"_s));
        QCOMPARE(m_presenter->notices.size(), 2);
        QVERIFY(m_presenter->notices.last().second.contains(m_folder->path()));
        QCOMPARE(m_server->requests().size(), 1);
        QVERIFY(m_opened.isEmpty());
    }

    void redirectedWithoutLength()
    {
        const QByteArray content = largeContent();
        RawServer behind;
        behind.answer = "HTTP/1.1 200 OK\r\nConnection: close\r\n\r\n" + content;
        m_server->answer = RawServer::message(
            302, "moved", "Location: " + behind.url(u"/Orvane_2.deb?x=1"_s).toEncoded() + "\r\n");
        download(m_server->url(u"/latest"_s));
        QCOMPARE(m_opened, QStringList{file(u"Orvane_2.deb"_s)});
        QVERIFY(contentOf(m_opened.first()) == content);
        QCOMPARE(m_presenter->progress, QList<double>{1.0});
    }

    void nothingOpensIt()
    {
        m_canOpen = false;
        m_server->answer = RawServer::message(200, "package");
        download(m_server->url(u"/a.deb"_s));
        QCOMPARE(m_presenter->notices.size(), 1);
        QVERIFY(m_presenter->notices.first().second.endsWith(file(u"a.deb"_s)));
        QCOMPARE(files(), QStringList{u"a.deb"_s});
    }

    void neverFromSafeToUnsafe()
    {
        const Certificate certificate;
        QSslConfiguration trusting = QSslConfiguration::defaultConfiguration();
        const QSslConfiguration before = trusting;
        trusting.addCaCertificate(certificate.server().localCertificate());

        QHttpServer safe;
        safe.sslSetup(certificate.server().localCertificate(), certificate.server().privateKey());
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

    void fullDisk()
    {
        put(file(u"a.deb"_s), "earlier");
        m_server->answer = RawServer::message(200, QByteArray(100'001, 'x'));
        for (const rlim_t room : {1000UL, 100'000UL}) { // for the first pieces, for all but the end
            const auto full = limitFileSize(room);
            download(m_server->url(u"/a.deb"_s));
            QVERIFY(m_presenter->notices.last().second.contains(m_folder->path()));
            QCOMPARE(files(), QStringList{u"a.deb"_s});
            QCOMPARE(contentOf(file(u"a.deb"_s)), "earlier");
        }
        QCOMPARE(m_presenter->notices.size(), 2);
    }

private:
    void download(const QUrl &url)
    {
        spawn(m_checker->downloadAndOpen({.version = u"2.0"_s, .url = url}));
        QVERIFY(m_checker->downloading());
        QTRY_VERIFY(!m_checker->downloading());
    }

    [[nodiscard]] QString file(const QString &name) const { return m_folder->filePath(name); }

    [[nodiscard]] QStringList files() const
    {
        return QDir(m_folder->path()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
    }

    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<UserDefaults> m_defaults;
    std::unique_ptr<FakePresenter> m_presenter;
    std::unique_ptr<RawServer> m_server;
    std::unique_ptr<UpdateChecker> m_checker;
    QStringList m_opened;
    bool m_canOpen = true;
};

QTEST_GUILESS_MAIN(TestUpdateDownload)
#include "tst_updatedownload.moc"

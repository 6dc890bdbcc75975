#include "update/UpdateChecker.h"
#include "update/UpdateError.h"

#include "base/Async.h"
#include "base/localization/Localization.h"
#include "settings/UserDefaults.h"
#include "tests/update/FakePresenter.h"
#include "tests/update/RawServer.h"

#include <QHttpServer>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using namespace orvane;
using Mode = UpdateChecker::Mode;

namespace {

const QString failedTitle = u"Не удалось проверить обновления"_s;
const QString failedText = u"Проверьте подключение к интернету и повторите."_s;
const QString upToDate = u"У вас последняя версия"_s;

QByteArray entry(const QByteArray &version, const QByteArray &url = "https://example.org/Orvane.deb")
{
    return R"({"version": ")" + version + R"(", "url": ")" + url + R"("})";
}

QByteArray manifest(const QByteArray &basic, const QByteArray &pro = entry("1.0"))
{
    return R"({"basic": )" + basic + R"(, "pro": )" + pro + "}";
}

} // namespace

class TestUpdateChecker : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void isNewer_data();
    void isNewer();
    void outcomes_data();
    void outcomes();
    void neverLessSafeThanItsServer();
    void textsOfTheOffer();
    void failuresOfTheServer_data();
    void failuresOfTheServer();
    void toldOncePerVersion();
    void withdrawnRelease();
    void noServer();
    void joinsTheRunningCheck();
    void newOfferReplacesTheOpenOne();
    void schedule();
    void destroyedWhileBusy();

private:
    std::unique_ptr<UpdateChecker> makeChecker();
    void check(UpdateChecker &checker, Mode mode);

    QTemporaryDir m_folder;
    std::unique_ptr<UserDefaults> m_defaults;
    std::unique_ptr<FakePresenter> m_presenter;
    std::unique_ptr<QHttpServer> m_server;
    UpdateChecker::Options m_options;

    // What the server answers.
    QByteArray m_body;
    QHttpServerResponse::StatusCode m_status;
    int m_requests = 0;
};

void TestUpdateChecker::init()
{
    m_defaults = std::make_unique<UserDefaults>(
        m_folder.filePath(QString::fromLatin1(QTest::currentTestFunction()) + u".json"_s));
    m_presenter = std::make_unique<FakePresenter>();
    m_server = std::make_unique<QHttpServer>();
    m_server->route(u"/api/version"_s, QHttpServerRequest::Method::Get, [this] {
        ++m_requests;
        return QHttpServerResponse("application/json", m_body, m_status);
    });
    const quint16 port = m_server->listen(QHostAddress::LocalHost);
    QVERIFY(port != 0);
    m_options = {.installedVersion = u"1.4.2"_s,
                 .edition = BuildInfo::Edition::Basic,
                 .endpoint = QUrl(u"http://127.0.0.1:%1/api/version"_s.arg(port))};
    m_status = QHttpServerResponse::StatusCode::Ok;
    m_requests = 0;
}

void TestUpdateChecker::cleanup()
{
    // Frames of what was cancelled end in the event loop.
    QTRY_COMPARE(m_presenter->openOffers, 0);
    QCOMPARE(m_presenter->mistakes, 0);
    Localization::setLanguage(u"ru"_s);
}

std::unique_ptr<UpdateChecker> TestUpdateChecker::makeChecker()
{
    const auto open = [](const QString &) { return true; };
    return std::make_unique<UpdateChecker>(*m_defaults, *m_presenter, open, m_folder.path(), m_options);
}

void TestUpdateChecker::check(UpdateChecker &checker, Mode mode)
{
    spawn(checker.check(mode));
    QTRY_VERIFY(!checker.checking());
}

void TestUpdateChecker::isNewer_data()
{
    QTest::addColumn<QString>("version");
    QTest::addColumn<QString>("than");
    QTest::addColumn<bool>("newer");
    const auto row = [](const QString &version, const QString &than, bool newer) {
        QTest::newRow(qUtf8Printable(version + u" > "_s + than)) << version << than << newer;
    };
    row(u"1.4.10"_s, u"1.4.2"_s, true);
    row(u"1.4.2"_s, u"1.4.10"_s, false);
    row(u"1.4.2"_s, u"1.4.2.0"_s, false);
    row(u"2"_s, u"1.99.99"_s, true);
    row(u"1.4.2-beta"_s, u"1.4.2"_s, false);
    row(u"v9.9"_s, u"0.8"_s, true);
    row(u""_s, u"0.1"_s, false);
    row(u"18446744073709551617"_s, u"18446744073709551616"_s, true);
}

void TestUpdateChecker::isNewer()
{
    QFETCH(const QString, version);
    QFETCH(const QString, than);
    QTEST(UpdateChecker::isNewer(version, than), "newer");
}

void TestUpdateChecker::outcomes_data()
{
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<bool>("pro");
    QTest::addColumn<QString>("available"); // empty: none
    QTest::addColumn<QString>("notice");    // of an interactive check; empty: the offer

    const auto row = [](const char *name, const QByteArray &body, const QString &available,
                        const QString &notice,
                        bool pro = false) { QTest::newRow(name) << body << pro << available << notice; };
    const QString none;
    row("newer", manifest(entry("1.4.10")), u"1.4.10"_s, none);
    row("equal", manifest(entry("1.4.2")), none, upToDate);
    row("only the other edition is newer", manifest(entry("1.4.2"), entry("9")), none, upToDate);
    row("extended edition", manifest(entry("9"), entry("1.5")), u"1.5"_s, none, true);
    row("further members",
        R"({"a": [1], "basic": {"version": "2", "url": "http://h/x", "b": 1}, "pro": )" +
            entry("1", "no address") + "}",
        u"2"_s, none);

    row("empty", "", none, failedTitle);
    row("cut off", manifest(entry("2")).chopped(1), none, failedTitle);
    row("other edition missing", R"({"basic": )" + entry("2") + "}", none, failedTitle);
    row("version is a number", manifest(R"({"version": 2, "url": "https://h/x"})"), none, failedTitle);
    row("too long", manifest(entry(QByteArray(2'000'000, '2'))), none, failedTitle);

    row("relative address", manifest(entry("2", "/Orvane.deb")), none, failedTitle);
    row("address of a file", manifest(entry("2", "file:///etc/passwd")), none, failedTitle);
}

void TestUpdateChecker::outcomes()
{
    QFETCH(const QByteArray, body);
    QFETCH(const bool, pro);
    QFETCH(const QString, available);
    QFETCH(const QString, notice);
    m_body = body;
    m_options.edition = pro ? BuildInfo::Edition::Pro : BuildInfo::Edition::Basic;
    const bool hasRelease = !available.isEmpty();

    // Nothing but an offer is shown unasked.
    auto checker = makeChecker();
    check(*checker, Mode::Scheduled);
    QCOMPARE(checker->available().has_value(), hasRelease);
    QCOMPARE(m_presenter->offers.size(), hasRelease ? 1 : 0);
    QVERIFY(m_presenter->notices.isEmpty());

    check(*checker, Mode::Interactive);
    QCOMPARE(m_requests, 2);
    QCOMPARE(m_presenter->offers.size(), hasRelease ? 2 : 0);
    QCOMPARE(m_presenter->notices.size(), hasRelease ? 0 : 1);
    if (hasRelease) {
        QCOMPARE(checker->available()->version, available);
        QCOMPARE(checker->property("available").value<UpdateRelease>(), checker->available());
        return;
    }
    QVERIFY(!checker->property("available").isValid());
    QCOMPARE(m_presenter->notices.first().first, notice);
    QCOMPARE(m_presenter->notices.first().second,
             notice == upToDate ? u"Установлена версия 1.4.2."_s : failedText);
}

void TestUpdateChecker::neverLessSafeThanItsServer()
{
    const auto offered = VersionManifest::fromJson(manifest(entry("2", "http://h/x")));
    const auto edition = BuildInfo::Edition::Basic;
    QVERIFY(offered->releaseFor(edition, QUrl(u"http://h/api"_s)));
    QVERIFY_THROWS_EXCEPTION(UpdateError,
                             static_cast<void>(offered->releaseFor(edition, QUrl(u"https://h/api"_s))));
}

void TestUpdateChecker::textsOfTheOffer()
{
    m_body = manifest(entry("1.5"));
    const auto checker = makeChecker();
    check(*checker, Mode::Interactive);
    Localization::setLanguage(u"en"_s);
    check(*checker, Mode::Interactive);
    QCOMPARE(m_presenter->offers.size(), 2);
    const UpdatePresenter::Offer &russian = m_presenter->offers[0];
    QCOMPARE(russian.title, u"Доступно обновление 1.5"_s);
    QVERIFY(russian.text.startsWith(u"Установлена версия 1.4.2."_s));
    QCOMPARE(russian.laterButton, u"Позже"_s);
    const UpdatePresenter::Offer &english = m_presenter->offers[1];
    QCOMPARE(english.title, u"Update available: 1.5"_s);
    QCOMPARE(english.downloadButton, u"Download"_s);
}

void TestUpdateChecker::failuresOfTheServer_data()
{
    QTest::addColumn<QByteArray>("answer");
    QTest::addColumn<bool>("stays");
    const QByteArray body = manifest(entry("2"));
    QTest::newRow("500 with a manifest") << RawServer::message(500, body) << false;
    QTest::newRow("broken off") << RawServer::message(200, body + "  ").chopped(2) << false;
    QTest::newRow("silent in the body") << RawServer::message(200, body + "  ").chopped(2) << true;
}

void TestUpdateChecker::failuresOfTheServer()
{
    QFETCH(const QByteArray, answer);
    QFETCH(const bool, stays);
    RawServer server;
    server.answer = answer;
    server.then = stays ? RawServer::Then::Wait : RawServer::Then::Close;
    m_options.endpoint = server.url(u"/api/version"_s);
    if (stays)
        m_options.checkTimeout = 100ms;

    const auto checker = makeChecker();
    check(*checker, Mode::Scheduled);
    QVERIFY(m_presenter->notices.isEmpty());
    QVERIFY(!m_defaults->contains(u"orvane.update.notifiedVersion"_s));

    server.shutDown(); // from here on nobody is there at all
    check(*checker, Mode::Interactive);
    QCOMPARE(m_presenter->notices, (QList<QPair<QString, QString>>{{failedTitle, failedText}}));
    QVERIFY(!checker->available() && m_presenter->offers.isEmpty());
}

void TestUpdateChecker::toldOncePerVersion()
{
    m_body = manifest(entry("1.5"));
    auto checker = makeChecker();
    check(*checker, Mode::Interactive); // asked, so it does not count as told
    check(*checker, Mode::Scheduled);
    QCOMPARE(m_presenter->offers.size(), 2);
    QCOMPARE(m_defaults->string(u"orvane.update.notifiedVersion"_s), u"1.5"_s);

    checker = makeChecker(); // the next start of the program
    check(*checker, Mode::Scheduled);
    QCOMPARE(m_presenter->offers.size(), 2);
    QVERIFY(checker->available());
    check(*checker, Mode::Interactive);
    QCOMPARE(m_presenter->offers.size(), 3);

    m_body = manifest(entry("1.6"));
    check(*checker, Mode::Scheduled);
    QCOMPARE(m_presenter->offers.size(), 4);
    QCOMPARE(m_defaults->string(u"orvane.update.notifiedVersion"_s), u"1.6"_s);
}

void TestUpdateChecker::withdrawnRelease()
{
    m_body = manifest(entry("1.5"));
    const auto checker = makeChecker();
    const QSignalSpy changed(checker.get(), &UpdateChecker::availableChanged);
    check(*checker, Mode::Scheduled);
    m_body = "unreadable";
    check(*checker, Mode::Scheduled);
    QVERIFY(checker->available()); // a failure says nothing about the release
    m_body = manifest(entry("1.4.2"));
    check(*checker, Mode::Scheduled);
    QVERIFY(!checker->available());
    QCOMPARE(changed.size(), 2);
}

void TestUpdateChecker::noServer()
{
    m_options.endpoint = UpdateChecker::endpoint(); // of this build
    QVERIFY2(m_options.endpoint.isEmpty(), "the tests are for a build without a server");
    const auto checker = makeChecker();
    const QSignalSpy checking(checker.get(), &UpdateChecker::checkingChanged);
    spawn(checker->check(Mode::Scheduled));
    QVERIFY(m_presenter->notices.isEmpty());
    spawn(checker->check(Mode::Interactive));
    QCOMPARE(m_presenter->notices,
             (QList<QPair<QString, QString>>{
                 {failedTitle, u"В этой сборке не задан адрес сервера обновлений."_s}}));
    QVERIFY(checking.isEmpty());
}

void TestUpdateChecker::joinsTheRunningCheck()
{
    RawServer server;
    server.then = RawServer::Then::Wait;
    m_options.endpoint = server.url(u"/api/version"_s);
    const auto checker = makeChecker();
    spawn(checker->check(Mode::Scheduled));
    QTRY_COMPARE(server.requests().size(), 1);
    spawn(checker->check(Mode::Interactive));
    spawn(checker->check(Mode::Scheduled));
    server.goOn(RawServer::message(200, manifest(entry("1.4.2"))));
    QTRY_VERIFY(!checker->checking());
    QCOMPARE(m_presenter->notices.size(), 1);
    QCOMPARE(m_presenter->notices.first().first, upToDate);
    QCOMPARE(server.requests().size(), 1);
}

void TestUpdateChecker::newOfferReplacesTheOpenOne()
{
    m_body = manifest(entry("1.5"));
    const auto checker = makeChecker();
    check(*checker, Mode::Scheduled);
    check(*checker, Mode::Interactive);
    QCOMPARE(m_presenter->offers.size(), 2);
    QTRY_COMPARE(m_presenter->openOffers, 1);
    m_presenter->choice = UpdatePresenter::Choice::Later;
    QTRY_COMPARE(m_presenter->openOffers, 0);
    QVERIFY(!checker->downloading());
}

void TestUpdateChecker::schedule()
{
    m_body = manifest(entry("1.4.2"));
    m_options.firstCheck = 1ms;
    m_options.repeat = 24h;
    const auto first = makeChecker();
    QSignalSpy checking(first.get(), &UpdateChecker::checkingChanged);
    QVERIFY(!checking.wait(50)); // not before it is told to
    first->start();
    QTRY_COMPARE(m_requests, 1);

    m_options.firstCheck = 24h;
    m_options.repeat = 10ms;
    const auto repeating = makeChecker();
    repeating->start();
    QTRY_VERIFY(m_requests >= 4);
}

void TestUpdateChecker::destroyedWhileBusy()
{
    RawServer server;
    server.then = RawServer::Then::Wait;
    m_options.endpoint = server.url(u"/api/version"_s);
    auto checker = makeChecker();
    spawn(checker->check(Mode::Interactive));
    spawn(checker->offerDownload({.version = u"2"_s, .url = server.url(u"/a.deb"_s)}));
    spawn(checker->downloadAndOpen({.version = u"2"_s, .url = server.url(u"/a.deb"_s)}));
    QTRY_COMPARE(server.requests().size(), 2);
    checker.reset();
    QTRY_COMPARE(m_presenter->openOffers, 0);
    QVERIFY(m_presenter->notices.isEmpty());
    QVERIFY(QDir(m_folder.path()).entryList({u"*.deb"_s, u"*.part"_s}).isEmpty());
}

QTEST_GUILESS_MAIN(TestUpdateChecker)
#include "tst_updatechecker.moc"

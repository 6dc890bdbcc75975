#include "update/UpdateChecker.h"
#include "update/UpdateError.h"

#include "base/Async.h"
#include "settings/UserDefaults.h"
#include "tests/support/Rows.h"
#include "tests/update/FakePresenter.h"
#include "tests/update/RawServer.h"

#include <QDir>
#include <QSignalSpy>
#include <QTemporaryDir>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using namespace orvane;
using namespace orvane::test;
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
    void init()
    {
        m_defaults = std::make_unique<UserDefaults>(
            m_folder.filePath(QString::fromLatin1(QTest::currentTestFunction()) + u".json"_s));
        m_presenter = std::make_unique<FakePresenter>();
        m_server = std::make_unique<RawServer>();
        m_options = {.installedVersion = u"1.4.2"_s,
                     .edition = BuildInfo::Edition::Basic,
                     .endpoint = m_server->url(u"/api/version"_s)};
    }

    void cleanup()
    {
        // Frames of what was cancelled end in the event loop.
        QTRY_COMPARE(m_presenter->openOffers, 0);
    }

    void isNewer_data()
    {
        const Rows<QString, QString, bool> rows("version", "than", "newer");
        const auto row = [&rows](const QString &version, const QString &than, bool newer) {
            rows(version + u" > "_s + than, version, than, newer);
        };
        row(u"1.4.10"_s, u"1.4.2"_s, true);
        row(u"1.4.2"_s, u"1.4.10"_s, false);
        row(u"1.4.2"_s, u"1.4.2.0"_s, false);
        row(u"1.4.2-beta"_s, u"1.4.2"_s, false);
        row(u"v9.9"_s, u"0.8"_s, true);
        row(u"18446744073709551617"_s, u"18446744073709551616"_s, true);
    }

    void isNewer()
    {
        QFETCH(const QString, version);
        QFETCH(const QString, than);
        QTEST(UpdateChecker::isNewer(version, than), "newer");
    }

    void outcomes_data()
    {
        // The version that is available, if any, and what an interactive check says of it, unless it offers
        // it.
        const Rows<QByteArray, bool, QString, QString> row("body", "pro", "available", "notice");
        const QString none;
        row("newer", manifest(entry("1.4.10")), false, u"1.4.10"_s, none);
        row("only the other edition is newer", manifest(entry("1.4.2"), entry("9")), false, none, upToDate);
        row("extended edition", manifest(entry("9"), entry("1.5")), true, u"1.5"_s, none);
        row("cut off", manifest(entry("2")).chopped(1), false, none, failedTitle);
        row("version is a number", manifest("{\"version\": 2, \"url\": \"https://h/x\"}"), false, none,
            failedTitle);
        row("too long", manifest(entry(QByteArray(2'000'000, '2'))), false, none, failedTitle);
        row("address of a file", manifest(entry("2", "file:///etc/passwd")), false, none, failedTitle);
    }

    void outcomes()
    {
        QFETCH(const QByteArray, body);
        QFETCH(const bool, pro);
        QFETCH(const QString, available);
        QFETCH(const QString, notice);
        publish(body);
        m_options.edition = pro ? BuildInfo::Edition::Pro : BuildInfo::Edition::Basic;
        const bool hasRelease = !available.isEmpty();

        // Nothing but an offer is shown unasked.
        const auto checker = makeChecker();
        check(*checker, Mode::Scheduled);
        QCOMPARE(checker->property("available").value<UpdateRelease>().version, available);
        QCOMPARE(m_presenter->offers.size(), hasRelease ? 1 : 0);
        QVERIFY(m_presenter->notices.isEmpty());

        check(*checker, Mode::Interactive);
        QCOMPARE(m_presenter->offers.size(), hasRelease ? 2 : 0);
        QCOMPARE(m_presenter->notices.value(0).first, notice);
    }

    void neverLessSafeThanItsServer()
    {
        const auto offered = VersionManifest::fromJson(manifest(entry("2", "http://h/x")));
        const auto edition = BuildInfo::Edition::Basic;
        QVERIFY(offered->releaseFor(edition, QUrl(u"http://h/api"_s)));
        QVERIFY_THROWS_EXCEPTION(UpdateError,
                                 static_cast<void>(offered->releaseFor(edition, QUrl(u"https://h/api"_s))));
    }

    void silentServer()
    {
        m_server->answer = RawServer::message(200, manifest(entry("2")) + "  ").chopped(2);
        m_server->then = RawServer::Then::Wait;
        m_options.checkTimeout = 300ms;
        const auto checker = makeChecker();
        check(*checker, Mode::Interactive);
        QCOMPARE(m_presenter->notices, (QList<QPair<QString, QString>>{{failedTitle, failedText}}));
        QVERIFY(!checker->available() && m_presenter->offers.isEmpty());
    }

    void offersEachVersionOnce()
    {
        publish(manifest(entry("1.5")));
        auto checker = makeChecker();
        check(*checker, Mode::Interactive); // asked for, so it does not count
        check(*checker, Mode::Scheduled);
        QCOMPARE(m_presenter->offers.size(), 2);
        QCOMPARE(m_presenter->offers.first().title, u"Доступно обновление 1.5"_s);
        QVERIFY(m_presenter->offers.first().text.startsWith(u"Установлена версия 1.4.2."_s));

        checker = makeChecker(); // the next start of the program
        check(*checker, Mode::Scheduled);
        QCOMPARE(m_presenter->offers.size(), 2);
        check(*checker, Mode::Interactive);
        QCOMPARE(m_presenter->offers.size(), 3);

        publish(manifest(entry("1.6")));
        check(*checker, Mode::Scheduled);
        QCOMPARE(m_presenter->offers.size(), 4);
        QTRY_COMPARE(m_presenter->openOffers, 1); // each gives way to the next
        m_presenter->choose(UpdatePresenter::Choice::Later);
        QTRY_COMPARE(m_presenter->openOffers, 0);
        QVERIFY(!checker->downloading());
    }

    void withdrawnRelease()
    {
        publish(manifest(entry("1.5")));
        const auto checker = makeChecker();
        const QSignalSpy changed(checker.get(), &UpdateChecker::availableChanged);
        check(*checker, Mode::Scheduled);
        publish("unreadable");
        check(*checker, Mode::Scheduled);
        QVERIFY(checker->available()); // a failure says nothing about the release
        publish(manifest(entry("1.4.2")));
        check(*checker, Mode::Scheduled);
        QVERIFY(!checker->available());
        QCOMPARE(changed.size(), 2);
    }

    void noServer()
    {
        m_options.endpoint = UpdateChecker::endpoint(); // of this build
        QVERIFY2(m_options.endpoint.isEmpty(), "the tests are for a build without a server");
        const auto checker = makeChecker();
        spawn(checker->check(Mode::Scheduled));
        QVERIFY(m_presenter->notices.isEmpty());
        spawn(checker->check(Mode::Interactive));
        QCOMPARE(m_presenter->notices,
                 (QList<QPair<QString, QString>>{
                     {failedTitle, u"В этой сборке не задан адрес сервера обновлений."_s}}));
    }

    void joinsTheRunningCheck()
    {
        m_server->then = RawServer::Then::Wait;
        const auto checker = makeChecker();
        spawn(checker->check(Mode::Scheduled));
        QTRY_COMPARE(m_server->requests().size(), 1);
        spawn(checker->check(Mode::Interactive));
        spawn(checker->check(Mode::Scheduled));
        m_server->goOn(RawServer::message(200, manifest(entry("1.4.2"))));
        QTRY_VERIFY(!checker->checking());
        QCOMPARE(m_presenter->notices,
                 (QList<QPair<QString, QString>>{{upToDate, u"Установлена версия 1.4.2."_s}}));
        QCOMPARE(m_server->requests().size(), 1);
    }

    void schedule()
    {
        publish(manifest(entry("1.4.2")));
        m_options.firstCheck = 1ms;
        const auto first = makeChecker();
        first->start();
        QTRY_COMPARE(m_server->requests().size(), 1);

        m_options.firstCheck = 24h;
        m_options.repeat = 10ms;
        const auto repeating = makeChecker();
        repeating->start();
        QTRY_VERIFY(m_server->requests().size() >= 4);
    }

    void destroyedWhileBusy()
    {
        m_server->then = RawServer::Then::Wait;
        const UpdateRelease release{.version = u"2"_s, .url = m_server->url(u"/a.deb"_s)};
        auto checker = makeChecker();
        spawn(checker->check(Mode::Interactive));
        spawn(checker->offerDownload(release));
        spawn(checker->downloadAndOpen(release));
        QTRY_COMPARE(m_server->requests().size(), 2);
        checker.reset();
        QTRY_COMPARE(m_presenter->openOffers, 0);
        QVERIFY(m_presenter->notices.isEmpty());
        QVERIFY(QDir(m_folder.path()).entryList({u"*.deb"_s, u"*.part"_s}).isEmpty());
    }

private:
    std::unique_ptr<UpdateChecker> makeChecker()
    {
        const auto open = [](const QString &) { return true; };
        return std::make_unique<UpdateChecker>(*m_defaults, *m_presenter, open, m_folder.path(), m_options);
    }

    void check(UpdateChecker &checker, Mode mode)
    {
        spawn(checker.check(mode));
        QTRY_VERIFY(!checker.checking());
    }

    void publish(const QByteArray &body) { m_server->answer = RawServer::message(200, body); }

    QTemporaryDir m_folder;
    std::unique_ptr<UserDefaults> m_defaults;
    std::unique_ptr<FakePresenter> m_presenter;
    std::unique_ptr<RawServer> m_server;
    UpdateChecker::Options m_options;
};

QTEST_GUILESS_MAIN(TestUpdateChecker)
#include "tst_updatechecker.moc"

#include "update/Telemetry.h"

#include "settings/AppSettings.h"
#include "settings/BuildInfo.h"
#include "settings/UserDefaults.h"
#include "tests/support/Files.h"
#include "tests/support/Rows.h"
#include "tests/update/RawServer.h"

#include <QDir>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>

using namespace Qt::StringLiterals;
using namespace orvane;
using namespace orvane::test;

namespace {

const QString lastSentKey = u"telemetryLastSent"_s;
const QString fallbackKey = u"orvane.fallbackMachineID"_s;

QJsonObject bodyOf(const QByteArray &request)
{
    return QJsonDocument::fromJson(request.sliced(request.indexOf("\r\n\r\n") + 4)).object();
}

} // namespace

class TestTelemetry : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_settings.reset();
        m_folder = std::make_unique<QTemporaryDir>();
        m_defaults = std::make_unique<UserDefaults>(m_folder->filePath(u"settings.json"_s));
        m_settings = std::make_unique<AppSettings>(*m_defaults);
        m_settings->setShareAnonymousStats(true);
        m_server = std::make_unique<RawServer>();
        m_server->answer = RawServer::message(200, "thanks");
        m_platformUUID = u"0123456789abcdef0123456789abcdef"_s;
        m_reads = 0;
    }

    void sendsTheReport()
    {
        const auto telemetry = makeTelemetry();
        const QDateTime before = QDateTime::currentDateTimeUtc();
        telemetry->pingIfEnabled();
        QTRY_VERIFY(m_defaults->date(lastSentKey));
        QVERIFY(m_defaults->date(lastSentKey)->msecsTo(before) <= 1);

        QCOMPARE(m_server->requests().size(), 1);
        const QByteArray request = m_server->requests().first();
        QVERIFY(request.startsWith("POST /api/telemetry HTTP/1.1\r\n"));
        QVERIFY(request.toLower().contains("\r\ncontent-type: application/json\r\n"));
        // The hash is `printf orvane-telemetry-v1:0123… | sha256sum`.
        const QJsonObject expected{
            {u"machineHash"_s, u"73e2f2a60167f241ff9f0ba21a26587685c4d3c5b419c748266687440e79cac0"_s},
            {u"os"_s, u"System 12"_s},
            {u"model"_s, u"Box «9»"_s},
            {u"cpu"_s, u""_s},
            {u"arch"_s, QSysInfo::buildCpuArchitecture()},
            {u"ramGB"_s, u"16"_s},
            {u"app"_s, QString(BuildInfo::version)},
            {u"build"_s, QString(BuildInfo::buildNumber)},
            {u"edition"_s, QString(BuildInfo::editionName)},
            {u"locale"_s, u"ru_RU"_s}};
        QCOMPARE(bodyOf(request), expected);
        QVERIFY(!m_defaults->contains(fallbackKey));
    }

    void nothingWhileOff()
    {
        m_platformUUID.clear(); // a report would have to make an identifier up
        m_settings->setShareAnonymousStats(false);
        makeTelemetry()->pingIfEnabled(); // the destructor waits for whatever was begun
        QCOMPARE(m_reads, 0);
        QVERIFY(!m_defaults->contains(fallbackKey) && !m_defaults->contains(lastSentKey));
        QVERIFY(m_server->requests().isEmpty());
    }

    void onceADay()
    {
        const QDateTime dayAgo = QDateTime::currentDateTimeUtc().addDays(-1);
        const auto telemetry = makeTelemetry();
        m_defaults->set(lastSentKey, dayAgo.addSecs(600));
        telemetry->pingIfEnabled();
        QCOMPARE(m_reads, 0);

        m_defaults->set(lastSentKey, dayAgo);
        telemetry->pingIfEnabled();
        telemetry->pingIfEnabled(); // the first is on its way
        QTRY_VERIFY(m_defaults->date(lastSentKey) > dayAgo);
        telemetry->pingIfEnabled();
        QCOMPARE(m_reads, 5);
        QCOMPARE(m_server->requests().size(), 1);
    }

    void failedReportIsTriedAgain()
    {
        m_server->answer = RawServer::message(300, {});
        const auto telemetry = makeTelemetry();
        telemetry->pingIfEnabled();
        QTRY_COMPARE(m_server->requests().size(), 1);
        QVERIFY(!m_defaults->contains(lastSentKey));
        m_server->answer = "HTTP/1.1 204 No Content\r\n\r\n";
        QTRY_VERIFY((telemetry->pingIfEnabled(), m_defaults->contains(lastSentKey)));
    }

    void fallbackStaysTheSame()
    {
        m_platformUUID.clear();
        const QString hash = makeTelemetry()->deviceInfo()[u"machineHash"_s];
        m_defaults->flush();
        UserDefaults nextStart(m_folder->filePath(u"settings.json"_s));
        QCOMPARE(Telemetry(*m_settings, nextStart, sources(), {}).deviceInfo()[u"machineHash"_s], hash);
        UserDefaults otherUser(m_folder->filePath(u"other.json"_s));
        QVERIFY(Telemetry(*m_settings, otherUser, sources(), {}).deviceInfo()[u"machineHash"_s] != hash);
    }

    void readsTheSystem_data()
    {
        const Rows<QByteArray, QByteArray, QString, QString> row("machineID", "cpuinfo", "id", "cpu");
        const QByteArray id = "3d1219c7c4c5404aaa1f6d2a48adfda4";
        row("usual", id + '\n',
            "processor\t: 0\nmodel\t\t: 17\nmodel name\t: A  B: C \n\n"
            "processor\t: 1\nmodel name\t: D\n",
            QString::fromLatin1(id), u"A  B: C"_s);
        row("first start, no name", "uninitialized\n", "processor\t: 0\nCPU part\t: 0xd08\n",
            QString(32, u'a'), {});
    }

    void readsTheSystem()
    {
        QFETCH(const QByteArray, machineID);
        QFETCH(const QByteArray, cpuinfo);
        put(m_folder->filePath(u"etc/machine-id"_s), machineID);
        put(m_folder->filePath(u"var/lib/dbus/machine-id"_s), QByteArray(32, 'a'));
        put(m_folder->filePath(u"proc/cpuinfo"_s), cpuinfo);
        put(m_folder->filePath(u"sys/class/dmi/id/product_name"_s), " Box 9\n");
        const DeviceSources sources = DeviceSources::ofThisMachine(m_folder->path());
        QTEST(sources.platformUUID(), "id");
        QTEST(sources.cpu(), "cpu");
        QCOMPARE(sources.model(), u"Box 9"_s);
        QVERIFY(sources.memory() > 1 << 28);
    }

private:
    [[nodiscard]] DeviceSources sources()
    {
        const auto reads = [this](const QString &value) {
            return [this, value] {
                ++m_reads;
                return value;
            };
        };
        return {.platformUUID = reads(m_platformUUID),
                .os = reads(u"System 12"_s),
                .model = reads(u"Box «9»"_s),
                .cpu = reads({}),
                .memory = [] { return 16.4 * (1 << 30); },
                .locale = reads(u"ru_RU"_s)};
    }

    [[nodiscard]] std::unique_ptr<Telemetry> makeTelemetry()
    {
        return std::make_unique<Telemetry>(
            *m_settings, *m_defaults, sources(),
            Telemetry::Options{.endpoint = m_server->url(u"/api/telemetry"_s)});
    }

    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<UserDefaults> m_defaults;
    std::unique_ptr<AppSettings> m_settings;
    std::unique_ptr<RawServer> m_server;
    QString m_platformUUID;
    int m_reads = 0;
};

QTEST_GUILESS_MAIN(TestTelemetry)
#include "tst_telemetry.moc"

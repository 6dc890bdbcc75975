#include "update/Telemetry.h"

#include "settings/AppSettings.h"
#include "settings/BuildInfo.h"
#include "settings/UserDefaults.h"
#include "tests/update/RawServer.h"

#include <QDir>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using namespace orvane;

namespace {

const QString lastSentKey = u"telemetryLastSent"_s;
const QString fallbackKey = u"orvane.fallbackMachineID"_s;

QJsonObject bodyOf(const QByteArray &request)
{
    return QJsonDocument::fromJson(request.sliced(request.indexOf("\r\n\r\n") + 4)).object();
}

void put(const QString &path, const QByteArray &content)
{
    QVERIFY(QDir().mkpath(QFileInfo(path).path()));
    QFile file(path);
    QVERIFY(file.open(QFile::WriteOnly));
    file.write(content);
}

} // namespace

class TestTelemetry : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void sendsTheReport();
    void nothingWhileOff();
    void nothingWithoutServer();
    void onceADay_data();
    void onceADay();
    void onlySuccessCounts_data();
    void onlySuccessCounts();
    void quickCallsSendOnce();
    void destroyedWhileSending();
    void fallbackStaysTheSame();
    void memoryIsRounded_data();
    void memoryIsRounded();
    void machineIdOfTheSystem_data();
    void machineIdOfTheSystem();
    void processorOfTheSystem_data();
    void processorOfTheSystem();
    void readsThisMachine();

private:
    [[nodiscard]] DeviceSources sources();
    [[nodiscard]] std::unique_ptr<Telemetry> makeTelemetry();

    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<UserDefaults> m_defaults;
    std::unique_ptr<AppSettings> m_settings;
    std::unique_ptr<RawServer> m_server;
    Telemetry::Options m_options;
    QString m_platformUUID;
    double m_memory = 0;
    int m_reads = 0;
};

void TestTelemetry::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    m_defaults = std::make_unique<UserDefaults>(m_folder->filePath(u"settings.json"_s));
    m_settings = std::make_unique<AppSettings>(*m_defaults);
    m_settings->setShareAnonymousStats(true);
    m_server = std::make_unique<RawServer>();
    m_server->answer = RawServer::message(200, "thanks");
    m_options = {.endpoint = m_server->url(u"/api/telemetry"_s)};
    m_platformUUID = u"0123456789abcdef0123456789abcdef"_s;
    m_memory = 16.4 * (1 << 30);
    m_reads = 0;
}

void TestTelemetry::cleanup()
{
    m_settings.reset();
}

DeviceSources TestTelemetry::sources()
{
    const auto reads = [this](const QString &value) {
        return [this, value] {
            ++m_reads;
            return value;
        };
    };
    return {.platformUUID =
                [this] {
                    ++m_reads;
                    return m_platformUUID;
                },
            .os = reads(u"System 12"_s),
            .model = reads(u"Box «9»"_s),
            .cpu = reads({}),
            .memory =
                [this] {
                    ++m_reads;
                    return m_memory;
                },
            .locale = reads(u"ru_RU"_s)};
}

std::unique_ptr<Telemetry> TestTelemetry::makeTelemetry()
{
    return std::make_unique<Telemetry>(*m_settings, *m_defaults, sources(), m_options);
}

void TestTelemetry::sendsTheReport()
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

void TestTelemetry::nothingWhileOff()
{
    m_platformUUID.clear(); // a report would have to make an identifier up
    m_settings->setShareAnonymousStats(false);
    auto telemetry = makeTelemetry();
    telemetry->pingIfEnabled();
    telemetry->pingIfEnabled();
    telemetry.reset(); // waits for whatever was begun
    QCOMPARE(m_reads, 0);
    QVERIFY(!m_defaults->contains(fallbackKey) && !m_defaults->contains(lastSentKey));

    // The server has seen nothing before what is sent once it is on.
    telemetry = makeTelemetry();
    m_settings->setShareAnonymousStats(true);
    telemetry->pingIfEnabled();
    QTRY_VERIFY(m_defaults->contains(lastSentKey));
    QCOMPARE(m_server->requests().size(), 1);
}

void TestTelemetry::nothingWithoutServer()
{
    m_options = {};
    QVERIFY2(m_options.endpoint.isEmpty(), "the tests are for a build without a server");
    makeTelemetry()->pingIfEnabled();
    QCOMPARE(m_reads, 0);
}

void TestTelemetry::onceADay_data()
{
    QTest::addColumn<QVariant>("lastSent");
    QTest::addColumn<bool>("due");
    const QDateTime now = QDateTime::currentDateTimeUtc();
    QTest::newRow("less than a day ago") << QVariant(now.addSecs(-86'400 + 600)) << false;
    QTest::newRow("a day ago") << QVariant(now.addSecs(-86'400)) << true;
    QTest::newRow("no date") << QVariant(now.toString(Qt::ISODate)) << true;
}

void TestTelemetry::onceADay()
{
    QFETCH(const QVariant, lastSent);
    QFETCH(const bool, due);
    m_defaults->set(lastSentKey, lastSent);
    const auto telemetry = makeTelemetry();
    telemetry->pingIfEnabled();
    QCOMPARE(m_reads > 0, due);
    if (!due)
        return;
    QTRY_VERIFY(m_defaults->value(lastSentKey) != lastSent);
    m_reads = 0;
    telemetry->pingIfEnabled();
    QCOMPARE(m_reads, 0);
}

void TestTelemetry::onlySuccessCounts_data()
{
    QTest::addColumn<QByteArray>("answer");
    QTest::addColumn<bool>("success");
    QTest::newRow("204") << QByteArray("HTTP/1.1 204 No Content\r\n\r\n") << true;
    QTest::newRow("300") << RawServer::message(300, {}) << false;
    QTest::newRow("silent") << QByteArray() << false;
}

void TestTelemetry::onlySuccessCounts()
{
    QFETCH(const QByteArray, answer);
    QFETCH(const bool, success);
    m_server->answer = answer;
    m_server->then = answer.isEmpty() ? RawServer::Then::Wait : RawServer::Then::Close;
    m_options.timeout = answer.isEmpty() ? 100ms : 15'000ms;
    const auto telemetry = makeTelemetry();
    telemetry->pingIfEnabled();
    QTRY_COMPARE(m_server->requests().size(), 1);
    if (success) {
        QTRY_VERIFY(m_defaults->contains(lastSentKey));
        return;
    }
    // A failed report is tried again by the next call that finds it ended.
    QVERIFY(!m_defaults->contains(lastSentKey));
    m_server->answer = RawServer::message(200, {});
    m_server->then = RawServer::Then::Close;
    QTRY_VERIFY((telemetry->pingIfEnabled(), m_defaults->contains(lastSentKey)));
    QVERIFY(m_server->requests().size() >= 2);
}

void TestTelemetry::quickCallsSendOnce()
{
    m_server->answer.clear();
    m_server->then = RawServer::Then::Wait;
    const auto telemetry = makeTelemetry();
    telemetry->pingIfEnabled();
    telemetry->pingIfEnabled();
    QTRY_COMPARE(m_server->requests().size(), 1);
    telemetry->pingIfEnabled();
    m_server->goOn(RawServer::message(200, {}));
    QTRY_VERIFY(m_defaults->contains(lastSentKey));
    telemetry->pingIfEnabled();
    QCOMPARE(m_server->requests().size(), 1);
    QCOMPARE(m_reads, 6);
}

void TestTelemetry::destroyedWhileSending()
{
    m_server->answer.clear();
    m_server->then = RawServer::Then::Wait;
    auto telemetry = makeTelemetry();
    telemetry->pingIfEnabled();
    QTRY_COMPARE(m_server->requests().size(), 1);
    telemetry.reset();
    QCoreApplication::processEvents();
    QVERIFY(!m_defaults->contains(lastSentKey));
}

void TestTelemetry::fallbackStaysTheSame()
{
    m_platformUUID.clear();
    const QString hash = makeTelemetry()->deviceInfo()[u"machineHash"_s];
    static const QRegularExpression hashForm(u"^[0-9a-f]{64}$"_s);
    static const QRegularExpression idForm(u"^[0-9A-F]{8}(-[0-9A-F]{4}){3}-[0-9A-F]{12}$"_s);
    QVERIFY2(hashForm.match(hash).hasMatch(), qUtf8Printable(hash));
    const auto id = m_defaults->string(fallbackKey);
    QVERIFY(id && idForm.match(*id).hasMatch());

    m_defaults->flush();
    UserDefaults nextStart(m_folder->filePath(u"settings.json"_s));
    QCOMPARE(Telemetry(*m_settings, nextStart, sources(), {}).deviceInfo()[u"machineHash"_s], hash);
    UserDefaults otherUser(m_folder->filePath(u"other.json"_s));
    QVERIFY(Telemetry(*m_settings, otherUser, sources(), {}).deviceInfo()[u"machineHash"_s] != hash);
}

void TestTelemetry::memoryIsRounded_data()
{
    QTest::addColumn<double>("gibibytes");
    QTest::addColumn<QString>("text");
    QTest::newRow("up") << 15.51 << u"16"_s;
    QTest::newRow("unreadable") << 0.0 << u"0"_s;
}

void TestTelemetry::memoryIsRounded()
{
    QFETCH(const double, gibibytes);
    m_memory = gibibytes * (1 << 30);
    QTEST(makeTelemetry()->deviceInfo()[u"ramGB"_s], "text");
}

void TestTelemetry::machineIdOfTheSystem_data()
{
    QTest::addColumn<QByteArray>("etc");
    QTest::addColumn<QByteArray>("dbus");
    QTest::addColumn<QString>("id");
    const QByteArray id = "3d1219c7c4c5404aaa1f6d2a48adfda4";
    const QByteArray other = "aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaa";
    QTest::newRow("usual") << id + '\n' << other << QString::fromLatin1(id);
    QTest::newRow("first start") << QByteArray("uninitialized\n") << other << QString::fromLatin1(other);
    QTest::newRow("bytes") << QByteArray(32, '\xff') << QByteArray(100'000, 'a') << QString();
}

void TestTelemetry::machineIdOfTheSystem()
{
    QFETCH(const QByteArray, etc);
    QFETCH(const QByteArray, dbus);
    if (!etc.isEmpty())
        put(m_folder->filePath(u"etc/machine-id"_s), etc);
    if (!dbus.isEmpty())
        put(m_folder->filePath(u"var/lib/dbus/machine-id"_s), dbus);
    QTEST(DeviceSources::ofThisMachine(m_folder->path()).platformUUID(), "id");
}

void TestTelemetry::processorOfTheSystem_data()
{
    QTest::addColumn<QByteArray>("cpuinfo");
    QTest::addColumn<QString>("cpu");
    QTest::newRow("several") << QByteArray("processor\t: 0\nmodel\t\t: 17\nmodel name\t: A  B: C \n\n"
                                           "processor\t: 1\nmodel name\t: D\n")
                             << u"A  B: C"_s;
    QTest::newRow("without a name") << QByteArray("processor\t: 0\nCPU part\t: 0xd08\n") << QString();
    QTest::newRow("empty") << QByteArray() << QString();
}

void TestTelemetry::processorOfTheSystem()
{
    QFETCH(const QByteArray, cpuinfo);
    put(m_folder->filePath(u"proc/cpuinfo"_s), cpuinfo);
    put(m_folder->filePath(u"sys/class/dmi/id/product_name"_s), " Box 9\n");
    const DeviceSources sources = DeviceSources::ofThisMachine(m_folder->path());
    QTEST(sources.cpu(), "cpu");
    QCOMPARE(sources.model(), u"Box 9"_s);
}

void TestTelemetry::readsThisMachine()
{
    const DeviceSources sources = DeviceSources::ofThisMachine();
    QVERIFY2(sources.os().contains(QSysInfo::kernelVersion()), qUtf8Printable(sources.os()));
    QVERIFY(sources.memory() > 1 << 28);
    QVERIFY(!sources.locale().isEmpty());
    Telemetry telemetry(*m_settings, *m_defaults, sources, {});
    QCOMPARE(telemetry.deviceInfo().size(), 10);
}

QTEST_GUILESS_MAIN(TestTelemetry)
#include "tst_telemetry.moc"

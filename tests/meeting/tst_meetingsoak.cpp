#include "audio/SampleRate.h"
#include "tests/meeting/MeetingHome.h"
#include "tests/support/FakeEngineHome.h"

#include <QProcess>
#include <QTest>

#include <QCoroTask>

#include <random>

using namespace Qt::StringLiterals;
using namespace orvane;

namespace {

constexpr qint64 mayBeLost = 5 * sampleRate;
/// Until so much has been heard it is in vain to ask what was kept.
constexpr qint64 enough = 20 * sampleRate;

/// A program that records meetings, killed.
class Victim
{
public:
    Victim(const QString &folder, const QString &engine)
    {
        m_process.start(QStringLiteral(MEETING_RUN), {u"record"_s, folder, engine});
        m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    }

    /// False when the status did not come.
    [[nodiscard]] bool waitForStatus(const QString &status)
    {
        while (!m_statuses.contains(status)) {
            if (!m_process.waitForReadyRead(30'000))
                return false;
            readLines();
        }
        return true;
    }

    void kill()
    {
        m_process.kill();
        m_process.waitForFinished();
        readLines();
    }

    /// By audio file: samples that the microphone had heard.
    [[nodiscard]] const QMap<QString, qint64> &heard() const { return m_heard; }

private:
    void readLines()
    {
        while (m_process.canReadLine()) {
            const QString line = QString::fromUtf8(m_process.readLine()).trimmed();
            const QString rest = line.section(u' ', 1);
            if (line.startsWith(u"heard"_s))
                m_heard[rest.section(u' ', 1)] = rest.section(u' ', 0, 0).toLongLong();
            else
                m_statuses += rest;
        }
    }

    QProcess m_process;
    QString m_statuses;
    QMap<QString, qint64> m_heard;
};

} // namespace

class TestMeetingSoak : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void survivesKills_data();
    void survivesKills();
};

void TestMeetingSoak::survivesKills_data()
{
    const int kills = qEnvironmentVariable("ORVANE_SOAK_COUNT", u"5"_s).toInt();
    std::mt19937 random(qEnvironmentVariable("ORVANE_SOAK_SEED", u"1"_s).toUInt());
    const auto below = [&random](int limit) { return std::uniform_int_distribution(0, limit - 1)(random); };
    QTest::addColumn<QString>("status");
    QTest::addColumn<int>("milliseconds");
    const QStringList statuses = {u"Идёт запись…"_s, u"Подготовка записи…"_s, u"Расшифровка записи"_s,
                                  u"Совещание сохранено"_s};
    for (int i = 0; i < kills; ++i) {
        const QString &status = statuses[i % statuses.size()];
        const int milliseconds = i % statuses.size() == 0 ? 2100 + below(900) : below(25);
        QTest::addRow("%d: %d ms after «%s»", i, milliseconds, qPrintable(status)) << status << milliseconds;
    }
}

void TestMeetingSoak::survivesKills()
{
    QFETCH(const QString, status);
    QFETCH(const int, milliseconds);
    const QTemporaryDir folder;
    const FakeEngineHome engine(u"whisper-server"_s);
    engine.behave(
        {.keepsBodies = false,
         .answers = {{u"/inference"_s,
                      {{.body = R"({"segments":[{"start":0,"end":1,"text":" said"}]})", .delayMs = 20}}}}});
    Victim victim(folder.path(), engine.resources());
    QVERIFY(victim.waitForStatus(status));
    QTest::qSleep(milliseconds);
    victim.kill();
    QVERIFY(!victim.heard().isEmpty() && victim.heard().first() >= enough);

    QProcess next;
    next.setProcessChannelMode(QProcess::ForwardedChannels);
    next.start(QStringLiteral(MEETING_RUN), {u"recover"_s, folder.path(), engine.resources()});
    QVERIFY(next.waitForFinished(60'000));
    QCOMPARE(next.exitCode(), 0);

    MeetingHome home(folder.path(), engine.resources());
    QCoro::waitFor(home.history().whenLoaded());
    const QSet<QString> recorded = QCoro::waitFor(home.history().audioFileNames());
    const QDir history(folder.filePath(u"Orvane/History"_s));
    QCOMPARE(recorded.size(), history.entryList({u"*.json"_s}).size()); // each one can be read
    QCOMPARE(home.markers(), QStringList());
    for (const auto &[name, heard] : victim.heard().asKeyValueRange()) {
        const qint64 kept = home.patternIn(name);
        QVERIFY2(kept >= 0 && kept >= heard - mayBeLost,
                 qPrintable(u"%1 of %2 samples in %3"_s.arg(kept).arg(heard).arg(name)));
        QCOMPARE(recorded.contains(name), kept > 0);
    }
}

QTEST_GUILESS_MAIN(TestMeetingSoak)
#include "tst_meetingsoak.moc"

#include "tests/meeting/MeetingHome.h"
#include "tests/support/FakeEngineHome.h"
#include "tests/support/Rows.h"

#include <QProcess>

#include <QCoroSignal>

#include <cstdio>
#include <random>
#include <thread>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using namespace orvane;
using namespace orvane::test;

namespace {

constexpr qint64 mayBeLost = 5 * sampleRate;
/// Until so much has been heard it is in vain to ask what was kept.
constexpr qint64 enough = 20 * sampleRate;
/// How much faster than life the microphone hears.
constexpr int haste = 10;

void report(const char *what, const QString &text)
{
    std::printf("%s %s\n", what, qPrintable(text));
    std::fflush(stdout);
}

/// Records and transcribes meetings one after the other until this process is killed, and reports each status
/// and how many samples of which file the microphone has heard.
QCoro::Task<> record(MeetingHome *home)
{
    MeetingTranscriber &meeting = home->meeting;
    QObject::connect(&meeting, &MeetingTranscriber::statusTextChanged, &meeting,
                     [&meeting] { report("status", meeting.statusText()); });
    while (meeting.errorText().isEmpty()) {
        QStringList names = home->audio();
        const auto isEarlier = [names](const QString &name) { return names.contains(name); };
        co_await meeting.start();
        names = home->audio();
        names.removeIf(isEarlier);
        {
            const std::jthread speaker([home, name = names.value(0)](const std::stop_token &stop) {
                auto next = std::chrono::steady_clock::now();
                for (qint64 heard = sampleRate / 10; !stop.stop_requested(); heard += sampleRate / 10) {
                    home->microphone->current->hear(0.1);
                    report("heard", u"%1 %2"_s.arg(heard).arg(name));
                    std::this_thread::sleep_until(next += 100ms / haste);
                }
            });
            co_await sleepFor(2200ms); // beyond a sync
        }
        meeting.stop();
        co_await qCoro(&meeting, &MeetingTranscriber::outcomeChanged);
    }
    qFatal("%s", qPrintable(meeting.errorText()));
}

/// A program that records meetings, killed.
class Victim
{
public:
    Victim(const QString &folder, const QString &engine)
    {
        m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        m_process.start(QCoreApplication::applicationFilePath(), {u"record"_s, folder, engine});
    }

    /// False when it was never reported.
    [[nodiscard]] bool waitFor(const QString &status)
    {
        while (!m_reports.contains(status.toUtf8())) {
            if (!m_process.waitForReadyRead(30'000))
                return false;
            m_reports += m_process.readAll();
        }
        return true;
    }

    /// By audio file: samples that the microphone had heard.
    [[nodiscard]] QMap<QString, qint64> kill()
    {
        m_process.kill();
        m_process.waitForFinished();
        QStringList lines = QString::fromUtf8(m_reports + m_process.readAll()).split(u'\n');
        lines.removeLast(); // the last one may be cut off
        QMap<QString, qint64> heard;
        for (const QString &line : std::as_const(lines)) {
            if (line.startsWith(u"heard "))
                heard[line.section(u' ', 2)] = line.section(u' ', 1, 1).toLongLong();
        }
        return heard;
    }

private:
    QProcess m_process;
    QByteArray m_reports;
};

} // namespace

class TestMeetingSoak : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void survivesKills_data()
    {
        const int kills = qEnvironmentVariable("ORVANE_SOAK_COUNT", u"5"_s).toInt();
        std::mt19937 random(qEnvironmentVariable("ORVANE_SOAK_SEED", u"1"_s).toUInt());
        const auto below = [&](int limit) { return std::uniform_int_distribution(0, limit - 1)(random); };
        const Rows<QString, int> row("status", "milliseconds");
        const QStringList statuses = {u"Идёт запись…"_s, u"Подготовка записи…"_s, u"Расшифровка записи"_s,
                                      u"Совещание сохранено"_s};
        for (int i = 0; i < kills; ++i) {
            const QString &status = statuses[i % statuses.size()];
            const int milliseconds = i % statuses.size() == 0 ? 2100 + below(900) : below(25);
            row(u"%1: %2 ms after «%3»"_s.arg(i).arg(milliseconds).arg(status), status, milliseconds);
        }
    }

    void survivesKills()
    {
        QFETCH(const QString, status);
        QFETCH(const int, milliseconds);
        const QTemporaryDir folder;
        const FakeEngineHome engine(u"whisper-server"_s);
        const FakeAnswer said{.body = R"({"segments":[{"start":0,"end":1,"text":" said"}]})", .delayMs = 20};
        engine.behave({.keepsBodies = false, .answers = {{u"/inference"_s, {said}}}});
        Victim victim(folder.path(), engine.resources());
        QVERIFY(victim.waitFor(status));
        QTest::qSleep(milliseconds);
        const QMap<QString, qint64> heard = victim.kill();
        QVERIFY(!heard.isEmpty() && heard.first() >= enough);

        // Started again, it deals with what was left behind.
        {
            MeetingHome next(folder.path(), engine.resources());
            QCoro::waitFor(next.meeting.findLeftovers());
            while (!next.meeting.leftovers().isEmpty()) {
                const qsizetype left = next.meeting.leftovers().size();
                next.meeting.transcribeLeftover(next.meeting.leftovers().first().audioFileName);
                QTRY_COMPARE(next.meeting.leftovers().size(), left - 1);
                QCOMPARE(next.meeting.errorText(), QString());
            }
        }
        QTRY_VERIFY(engine.allEnded());

        MeetingHome home(folder.path(), engine.resources());
        QCoro::waitFor(home.history.whenLoaded());
        const QSet<QString> recorded = QCoro::waitFor(home.history.audioFileNames());
        const QDir history(folder.filePath(u"Orvane/History"_s));
        QCOMPARE(recorded.size(), history.entryList({u"*.json"_s}).size()); // each one can be read
        QCOMPARE(home.markers(), QStringList());
        for (const auto &[name, samples] : heard.asKeyValueRange()) {
            const qint64 kept = home.heardIn(name);
            QVERIFY2(kept >= 0 && kept >= samples - mayBeLost,
                     qPrintable(u"%1 of %2 samples in %3"_s.arg(kept).arg(samples).arg(name)));
            QCOMPARE(recorded.contains(name), kept > 0);
        }
    }
};

/// `record FOLDER ENGINE` makes it the program to kill.
int main(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.value(1) != u"record") {
        TestMeetingSoak test;
        return QTest::qExec(&test, argc, argv);
    }
    MeetingHome home(arguments[2], arguments[3]);
    spawn(record(&home));
    return QCoreApplication::exec();
}

#include "tst_meetingsoak.moc"

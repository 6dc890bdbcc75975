#include "tests/e2e/Surroundings.h"
#include "tests/support/Files.h"
#include "tests/support/Rows.h"
#include "tests/support/WordError.h"

#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <csignal>

using namespace Qt::StringLiterals;
using namespace orvane;
using namespace orvane::test;

namespace {

// Long enough for a busy machine under a sanitizer.
constexpr int patience = 120'000;

} // namespace

/// Meetings of the real application, led by commands, with a real voice and the real engine.
class MeetingTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        m_program.install(u"base"_s);
        m_program.setPreferences(R"({"detectSpeakers":true})");
        const auto nobody = meeting(u"start"_s);
        QCOMPARE(nobody.exitCode, 1);
        QCOMPARE(nobody.complaints.count('\n'), 1);
    }

    void init() { launch(); }

    void cleanup()
    {
        m_application->terminate();
        QVERIFY(m_application->waitForFinished(patience));
        QCOMPARE(m_application->exitCode(), 0);
        for (const QString &folder : {u"/History"_s, u"/Recordings"_s})
            QDir(m_program.dataFolder() + folder).removeRecursively();
    }

    void recordsAndTranscribes()
    {
        QCOMPARE(meeting(u"stop"_s).exitCode, 1);
        record();
        QCOMPARE(meeting(u"start"_s).complaints, u"Запись совещания уже идёт.\n"_s.toUtf8());
        QCOMPARE(meeting(u"cancel"_s).complaints,
                 u"Идёт запись: её завершает команда orvane meeting stop.\n"_s.toUtf8());
        QCOMPARE(meeting(u"stop"_s).exitCode, 0);
        QTRY_VERIFY_WITH_TIMEOUT(status().value(1).startsWith(u"Совещание сохранено"_s), patience);

        QCOMPARE(m_program.recordFiles().size(), 1);
        const QJsonObject record = savedRecord();
        QCOMPARE(record[u"kind"_s].toString(), u"meeting"_s);
        QCOMPARE(record[u"audioFileName"_s].toString(), recordings().value(0));
        VERIFY_WORDS(record[u"text"_s].toString(), said());
        for (const QJsonValue segment : record[u"segments"_s].toArray())
            QVERIFY(segment[u"speaker"_s].toInteger() > 0);
        QCOMPARE(meeting(u"transcribe"_s).exitCode, 1); // nothing is left over
    }

    void abandonsTheTranscription()
    {
        record();
        QCOMPARE(meeting(u"stop"_s).exitCode, 0);
        QCOMPARE(meeting(u"cancel"_s).exitCode, 0);
        QCOMPARE(status(), (QStringList{u"idle"_s, u"Расшифровка отменена · аудиозапись сохранена"_s}));
        QCOMPARE(recordings().size(), 1);
        QCOMPARE(m_program.recordFiles(), QStringList());
    }

    void goesOnAfter_data()
    {
        const Rows<int, bool> row("signal", "isDismissed");
        row("a kill", SIGKILL, false);
        row("an end while recording", SIGTERM, false);
        row("a kill, and nobody wants it", SIGKILL, true);
    }

    void goesOnAfter()
    {
        QFETCH(const int, signal);
        QFETCH(const bool, isDismissed);
        record();
        QTest::qWait(signal == SIGKILL ? 5000 : 0); // until all of it must be on the disk
        ::kill(static_cast<pid_t>(m_application->processId()), signal);
        QVERIFY(m_application->waitForFinished(patience));

        launch();
        QTRY_VERIFY_WITH_TIMEOUT(status().constLast().startsWith(u"Осталась нерасшифрованная запись"_s),
                                 patience);
        if (isDismissed) {
            QCOMPARE(meeting(u"dismiss"_s).exitCode, 0);
            QCOMPARE(status(), QStringList{u"idle"_s});
            QCOMPARE(recordings().size(), 1);
            return;
        }
        QCOMPARE(meeting(u"transcribe"_s).exitCode, 0);
        QTRY_VERIFY_WITH_TIMEOUT(status().value(1).startsWith(u"Совещание сохранено"_s), patience);
        QCOMPARE(m_program.recordFiles().size(), 1);
        VERIFY_WORDS(savedRecord()[u"text"_s].toString(), said());
        QCOMPARE(recordings().size(), 1);
    }

private:
    [[nodiscard]] OrvaneProgram::Result meeting(const QString &action) const
    {
        return m_program.run({u"meeting"_s, action});
    }
    [[nodiscard]] QStringList status() const
    {
        return QString::fromUtf8(meeting(u"status"_s).output).trimmed().split(u'\n');
    }
    [[nodiscard]] QStringList recordings() const
    {
        return QDir(m_program.dataFolder() + u"/Recordings"_s).entryList({u"*.wav"_s}, QDir::Files);
    }
    [[nodiscard]] QJsonObject savedRecord() const
    {
        return QJsonDocument::fromJson(contentOf(m_program.recordFiles().value(0))).object();
    }
    static QString said() { return QString::fromUtf8(contentOf(fixture(u"russian.txt"_s))); }

    void record()
    {
        QCOMPARE(meeting(u"start"_s).exitCode, 0);
        QCOMPARE(status(), (QStringList{u"recording"_s, u"Идёт запись…"_s}));
        m_surroundings.sound().speak(Surroundings::microphone, fixture(u"russian.wav"_s));
    }

    void launch()
    {
        m_application = m_program.start({u"--background"_s});
        QTRY_COMPARE_WITH_TIMEOUT(status().constFirst(), u"idle"_s, patience);
    }

    OrvaneProgram m_program;
    Surroundings m_surroundings{m_program};
    std::unique_ptr<QProcess> m_application;
};

QTEST_GUILESS_MAIN(MeetingTest)
#include "tst_meeting.moc"

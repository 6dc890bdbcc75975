#include "tests/e2e/OrvaneProgram.h"
#include "tests/support/Files.h"
#include "tests/support/Rows.h"

#include <QDir>
#include <QFile>

using namespace Qt::StringLiterals;
using namespace orvane;
using namespace orvane::test;

/// What needs no engine: the command line's manners, and the application beside it.
class CommandLineTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void refusesAWrongCommand_data()
    {
        const Rows<QStringList, QString> row("arguments", "complaint");

        row("unknown command", {u"sing"_s}, u"Неизвестная команда: sing"_s);
        row("several files into one", {u"transcribe"_s, u"a"_s, u"b"_s, u"--output"_s, u"c.txt"_s},
            u"--output"_s);
        row("subtitles of several files", {u"transcribe"_s, u"a"_s, u"b"_s, u"--format"_s, u"srt"_s},
            u"--output"_s);
        row("results that overwrite each other",
            {u"transcribe"_s, u"a.wav"_s, u"a.mp3"_s, u"--output"_s, u"/tmp"_s}, u"одинаковыми"_s);
        row("text into a folder", {u"correct"_s, u"a"_s, u"--output"_s, u"/tmp"_s},
            u"файл, а не папку: /tmp"_s);
    }

    void refusesAWrongCommand()
    {
        QFETCH(QStringList, arguments);
        QFETCH(QString, complaint);
        const auto result = OrvaneProgram().run(arguments);
        QCOMPARE(result.exitCode, 2);
        QCOMPARE(result.output, QByteArray());
        QVERIFY2(QString::fromUtf8(result.complaints).contains(complaint), result.complaints.constData());
    }

    void sparesTheRecording()
    {
        const OrvaneProgram orvane;
        const QString recording = orvane.path(u"talk.txt"_s);
        put(recording, {});
        const QString byDetour = orvane.path(u"tmp/../talk.txt"_s);
        for (const auto &[command, output] : {std::pair(u"transcribe"_s, recording),
                                              {u"transcribe"_s, byDetour},
                                              {u"transcribe"_s, orvane.path({})},
                                              {u"correct"_s, byDetour}}) {
            const auto result = orvane.run({command, recording, u"--output"_s, output});
            QCOMPARE(result.exitCode, 2);
            QVERIFY2(result.complaints.contains("исходный файл"), result.complaints.constData());
        }
    }

    void cannotBegin_data()
    {
        const Rows<QStringList, QString> row("arguments", "complaint");

        row("no model at all", {u"transcribe"_s, u"a.wav"_s}, u"Не скачано ни одной модели"_s);
        row("model not downloaded", {u"transcribe"_s, u"a.wav"_s, u"--model"_s, u"small"_s},
            u"не скачана: small"_s);
        row("no such model", {u"transcribe"_s, u"a.wav"_s, u"--model"_s, u"/nowhere.bin"_s},
            u"Нет такой модели"_s);
        row("text model not downloaded", {u"correct"_s, u"a.txt"_s, u"--model"_s, u"qwen2.5-3b"_s},
            u"не скачана: qwen2.5-3b"_s);
        row("no model of texts", {u"correct"_s, u"a.txt"_s, u"--model"_s, u"/bin/sh"_s},
            u"Это не языковая модель"_s);
        row("no such record", {u"history"_s, u"show"_s, u"1234"_s}, u"нет записи 1234"_s);
    }

    void cannotBegin()
    {
        QFETCH(QStringList, arguments);
        QFETCH(QString, complaint);
        const auto result = OrvaneProgram().run(arguments);
        QCOMPARE(result.exitCode, 1);
        QCOMPARE(result.output, QByteArray());
        const QString words = QString::fromUtf8(result.complaints);
        QVERIFY2(words.contains(complaint), result.complaints.constData());
        QCOMPARE(words.count(u'\n'), 1);
    }

    void speaksTheInterfaceLanguage()
    {
        const OrvaneProgram orvane;
        orvane.setPreferences(R"({"interfaceLanguage": "en"})");
        QVERIFY(orvane.run({u"--help"_s}).output.contains("turns speech into text"));
        QCOMPARE(orvane.run({u"sing"_s}).complaints.split('\n').first(), QByteArray("Unknown command: sing"));
    }

    void loadsNothingThatDrawsOrDownloads()
    {
        OrvaneProgram orvane;
        orvane.setEnvironment(u"LD_TRACE_LOADED_OBJECTS"_s, u"1"_s);
        const QByteArray libraries = orvane.run({}).output;
        QVERIFY2(libraries.contains("libQt6Core"), libraries.constData());
        for (const char *heavy : {"libQt6Gui", "libQt6Widgets", "libxcb", "libcurl"})
            QVERIFY2(!libraries.contains(heavy), heavy);
    }

    void survivesADisplayThatDoesNotAnswer_data()
    {
        const Rows<QString, QString> row("variable", "display");
        row("X", u"DISPLAY"_s, u":59999"_s);
        row("Wayland", u"WAYLAND_DISPLAY"_s, u"nobody"_s);
        row("platform", u"QT_QPA_PLATFORM"_s, u"xcb"_s);
        row("platform without a plugin", u"QT_QPA_PLATFORM"_s, u"nothing"_s);
    }

    void survivesADisplayThatDoesNotAnswer()
    {
        QFETCH(const QString, variable);
        QFETCH(const QString, display);
        OrvaneProgram orvane;
        for (const QString &other : {u"QT_QPA_PLATFORM"_s, u"DISPLAY"_s, u"WAYLAND_DISPLAY"_s})
            orvane.setEnvironment(other, {});
        orvane.setEnvironment(variable, display);
        const auto result = orvane.run({});
        QCOMPARE(result.complaints.count('\n'), variable == "QT_QPA_PLATFORM"_L1 ? 1 : 0);
        QCOMPARE(result.exitCode, 0);
        QVERIFY(result.output.contains("orvane transcribe"));
    }

    void saysWhenItsResultCannotBeWritten()
    {
        QProcess shell;
        shell.start(u"sh"_s, {u"-c"_s, u"exec '%1' --help >/dev/full"_s.arg(QStringLiteral(ORVANE_PROGRAM))});
        QVERIFY(shell.waitForFinished());
        QCOMPARE(shell.exitCode(), 1);
        QVERIFY(!shell.readAllStandardError().isEmpty());
    }

    void writesNothingIntoAFileThatTookTheStreamsPlace()
    {
        QProcess shell;
        shell.start(u"sh"_s,
                    {u"-c"_s, u"exec '%1' --help <&- >&- 2>&-"_s.arg(QStringLiteral(ORVANE_PROGRAM))});
        QVERIFY(shell.waitForFinished());
        QCOMPARE(shell.exitCode(), 1);
    }

    /// The command line must neither read nor delete the file of a running application's engines.
    void leavesTheApplicationsEnginesAlone()
    {
        const OrvaneProgram orvane;
        const QString processFile = orvane.dataFolder() + u"/server-pids.txt"_s;
        put(processFile, "1");
        QCOMPARE(orvane.run({u"history"_s}).exitCode, 0);
        QVERIFY(QFile::exists(processFile));

        // The application itself takes it for what a crash left behind.
        const auto application = orvane.start({u"--background"_s});
        QTRY_VERIFY_WITH_TIMEOUT(!QFile::exists(processFile), 30'000);
        application->terminate();
        QVERIFY(application->waitForFinished());
        QCOMPARE(application->exitStatus(), QProcess::NormalExit);
    }

    /// Nobody is on a bus here: the lock in the data folder is all that there is.
    void staysAloneOnItsData()
    {
        const OrvaneProgram orvane;
        const auto first = orvane.start({u"--background"_s});
        QTRY_VERIFY_WITH_TIMEOUT(QFile::exists(orvane.dataFolder() + u"/application.lock"_s), 30'000);
        const auto second = orvane.run({u"--background"_s});
        QCOMPARE(second.exitCode, 0);
        QVERIFY(second.complaints.contains("Orvane уже работает."));
        first->terminate();
        QVERIFY(first->waitForFinished());

        const auto third = orvane.start({u"--background"_s});
        QVERIFY(!third->waitForFinished(1000));
        third->terminate();
        QVERIFY(third->waitForFinished());
    }

    /// A power loss ended the recording: its header tells of no samples.
    void repairsWhatACrashLeftBehind()
    {
        const OrvaneProgram orvane;
        QDir().mkpath(orvane.dataFolder() + u"/Recordings"_s);
        const QString audio = orvane.dataFolder() + u"/Recordings/Совещание.wav"_s;
        const QString marker = audio + u".unfinished.json"_s;
        put(audio, QByteArray(44 + 32'000, '\0'));
        put(marker, R"({"languageCode": "ru", "modelID": "base", "startedAt": "2025-03-03T14:05:09Z"})");

        const auto application = orvane.start({u"--background"_s});
        const auto header = [&audio] {
            QFile file(audio);
            return file.open(QFile::ReadOnly) ? file.read(44) : QByteArray();
        };
        QTRY_VERIFY_WITH_TIMEOUT(header().startsWith("RIFF"), 30'000);
        application->terminate();
        QVERIFY(application->waitForFinished());

        QCOMPARE(application->exitStatus(), QProcess::NormalExit);
        QCOMPARE(header().right(4), QByteArray::fromHex("007d0000"));
        QVERIFY(QFile::exists(marker)); // until it is transcribed
    }
};

QTEST_GUILESS_MAIN(CommandLineTest)
#include "tst_commandline.moc"

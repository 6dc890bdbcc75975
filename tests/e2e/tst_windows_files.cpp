#include "tests/e2e/WindowedTest.h"
#include "tests/support/Files.h"
#include "tests/support/WordError.h"
#include "tests/support/XDisplay.h"

#include <QGuiApplication>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace orvane;
using namespace orvane::test;

namespace {

bool mouse(const QString &commands)
{
    return QProcess::execute(u"xdotool"_s, commands.split(u' ')) == 0;
}

} // namespace

/// Files come into the window, and results out of it, in the ways that a desktop has for that.
class WindowFilesTest : public WindowedTest
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_program.install(u"tiny.en"_s);
        for (const QString &file : m_program.recordFiles())
            QVERIFY(QFile::remove(file));
        setPreferences();
        launch();
    }

    void takesADroppedFileAndSavesSubtitles()
    {
        dragIntoTheWindow(fixture(u"jfk.wav"_s));
        QTRY_VERIFY_WITH_TIMEOUT(m_windows.find(Role::PageTab, u"Расшифровка"_s), patience);
        m_source.kill();
        QVERIFY(m_source.waitForFinished(patience));
        QTRY_VERIFY_WITH_TIMEOUT(!transcript().isEmpty(), patience);
        VERIFY_WORDS(transcript(), said());

        const QString target = m_program.path(u"tmp/speech of a president.srt"_s);
        QVERIFY(m_windows.press(Role::Button, u"Сохранить"_s));
        QVERIFY(m_windows.press(Role::MenuItem, u"Сохранить как .srt"_s));
        QTRY_VERIFY_WITH_TIMEOUT(m_windows.is(Role::Dialog, u"Сохранить"_s, &Element::isActive), patience);
        QVERIFY(m_windows.type(u"File name:"_s, target));
        pressKeys({u"Return"_s});
        QTRY_VERIFY_WITH_TIMEOUT(m_windows.find(Role::AlertMessage, u"Сохранено: "_s + target), patience);
        const QString subtitles = QString::fromUtf8(contentOf(target));
        QVERIFY2(subtitles.startsWith(u"1\n00:00:00,"_s), qPrintable(subtitles));
        VERIFY_WORDS(wordsBetweenTimes(subtitles), said());
    }

    void worksByTheScreenReaderAlone()
    {
        QVERIFY(m_windows.press(Role::Button, u"Выбрать файл…"_s));
        QVERIFY(m_windows.write(u"File name:"_s, fixture(u"jfk.wav"_s)));
        QVERIFY(m_windows.press(Role::Button, u"Open"_s));
        QTRY_VERIFY_WITH_TIMEOUT(!transcript().isEmpty(), patience);
        VERIFY_WORDS(transcript(), said());
        QCOMPARE(record()[u"sourceFilePath"_s].toString(), fixture(u"jfk.wav"_s));
    }

private:
    /// As a hand does it: out of another program's window.
    void dragIntoTheWindow(const QString &file)
    {
        QVERIFY(mouse(u"search --onlyvisible --name ^Orvane$ windowmove 200 40"_s));
        m_source.start(QStringLiteral(ORVANE_DRAG_SOURCE), {file});
        QVERIFY(m_source.waitForStarted());
        QVERIFY(mouse(u"search --sync --onlyvisible --name ^Files$"_s));
        QVERIFY(mouse(u"mousemove 40 40 sleep 0.3 mousedown 1 sleep 0.3 mousemove 90 90 sleep 0.2 "
                      "mousemove 500 300 sleep 0.2 mousemove 700 400"_s));
        QTRY_VERIFY_WITH_TIMEOUT(m_windows.find(Role::Label, u"Отпустите файлы, чтобы расшифровать"_s),
                                 patience);
        QVERIFY(mouse(u"mouseup 1"_s));
    }

    static QString wordsBetweenTimes(const QString &subtitles)
    {
        QStringList words;
        for (const QString &line : subtitles.split(u'\n')) {
            if (!line.contains(u"-->"_s) && !line.contains(QRegularExpression(u"^\\d+$"_s)))
                words.append(line);
        }
        return words.join(u' ');
    }

    QProcess m_source;
};

ORVANE_DISPLAY_TEST_MAIN(WindowFilesTest, QGuiApplication)
#include "tst_windows_files.moc"

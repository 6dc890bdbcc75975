#include "tests/e2e/WindowedTest.h"
#include "tests/support/WordError.h"
#include "tests/support/XDisplay.h"

#include <QDir>
#include <QGuiApplication>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace orvane;
using namespace orvane::test;

namespace {} // namespace

/// Meetings that are led in the window, with a real voice.
class WindowMeetingTest : public WindowedTest
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_program.install(u"tiny.en"_s);
        for (const QString &folder : {u"/History"_s, u"/Recordings"_s})
            QDir(m_program.dataFolder() + folder).removeRecursively();
        setPreferences();
        launch();
    }

    void recordsTranscribesAndPlays()
    {
        recordTheSpeech();
        QVERIFY(m_windows.press(Role::Button, u"Завершить запись"_s));
        checkTheTranscript();
        QCOMPARE(record()[u"kind"_s].toString(), u"meeting"_s);

        QVERIFY(!isHeard());
        const auto segment = m_windows.first([](const Element &element) {
            return element.role == Role::ListItem && element.name.startsWith(u"0:0"_s);
        });
        QVERIFY(segment);
        QVERIFY(m_windows.press(Role::ListItem, segment->name));
        QTRY_VERIFY_WITH_TIMEOUT(m_windows.find(Role::Button, u"Пауза"_s), patience);
        QTRY_VERIFY_WITH_TIMEOUT(isHeard(), patience);
        QVERIFY(m_windows.press(Role::Button, u"Пауза"_s));
        QTRY_VERIFY_WITH_TIMEOUT(m_windows.find(Role::Button, u"Слушать"_s), patience);
    }

    void losesNothingWhenKilled()
    {
        recordTheSpeech();
        QTest::qWait(5000); // until all of it must be on the disk
        kill();
        QCOMPARE(m_program.recordFiles(), QStringList());

        launch();
        QVERIFY(m_windows.press(Role::PageTab, u"Совещание"_s));
        QVERIFY(m_windows.press(Role::Button, u"Расшифровать"_s));
        checkTheTranscript();
    }

private:
    void recordTheSpeech()
    {
        QVERIFY(m_windows.press(Role::PageTab, u"Совещание"_s));
        QVERIFY(m_windows.press(Role::Button, u"Начать запись"_s));
        QTRY_VERIFY_WITH_TIMEOUT(m_windows.find(Role::Button, u"Завершить запись"_s), patience);
        m_surroundings.sound().speak(Surroundings::microphone, fixture(u"jfk.wav"_s));
    }

    void checkTheTranscript()
    {
        QTRY_VERIFY_WITH_TIMEOUT(m_windows.find(Role::Button, u"Открыть расшифровку"_s), patience);
        QVERIFY(m_windows.press(Role::Button, u"Открыть расшифровку"_s));
        QTRY_VERIFY_WITH_TIMEOUT(!transcript().isEmpty(), patience);
        VERIFY_WORDS(transcript(), said());
    }

    /// Whether a program plays something.
    [[nodiscard]] bool isHeard()
    {
        return m_surroundings.sound().control({u"list"_s, u"sink-inputs"_s}).contains(u"Corked: no"_s);
    }
};

ORVANE_DISPLAY_TEST_MAIN(WindowMeetingTest, QGuiApplication)
#include "tst_windows_meeting.moc"

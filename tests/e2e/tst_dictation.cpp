#include "tests/e2e/Surroundings.h"
#include "tests/support/FocusedEditor.h"
#include "tests/support/Rows.h"
#include "tests/support/WordError.h"
#include "tests/support/XDisplay.h"
#include "tests/support/XKeyboard.h"

#include <QGuiApplication>

#include <csignal>
#include <random>

using namespace Qt::StringLiterals;
using namespace orvane;
using namespace orvane::test;
using Key = XKeyboard::Key;
using Kind = FocusedEditor::Kind;

namespace {

// Long enough for a busy machine under a sanitizer.
constexpr int patience = 120'000;
/// Dictations until caches are full, and what the program may then still grow by.
constexpr int settlingCount = 20;
constexpr qint64 maxGrowthKiB = 4096;
constexpr qsizetype fewFiles = 4; // those that an engine or a paste has open at the moment
const QString microphone = Surroundings::microphone;
const QString sentence = u"The quick brown fox jumps over the lazy dog and runs into the forest"_s;

QString spoken(const QString &text, const QString &file)
{
    if (QProcess::execute(u"flite"_s, {u"-voice"_s, u"rms"_s, u"-t"_s, text, u"-o"_s, file}) != 0)
        qFatal("flite does not speak");
    return file;
}

/// What another program gets when it pastes.
QString clipboard()
{
    QProcess reader;
    reader.start(u"xclip"_s, {u"-o"_s, u"-selection"_s, u"clipboard"_s});
    reader.waitForFinished();
    return QString::fromUtf8(reader.readAllStandardOutput());
}

} // namespace

/// The program as its user has it: keys, a voice, and an editor that has the focus.
class DictationTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        XKeyboard::setLayouts(u"us"_s);
        m_program.install(u"base"_s);
        m_speech = spoken(sentence, m_program.path(u"sentence.wav"_s));

        const auto nobody = m_program.run({u"toggle"_s});
        QCOMPARE(nobody.exitCode, 1);
        QCOMPARE(nobody.complaints, u"Orvane не отвечает: запустите его командой orvane.\n"_s.toUtf8());

        m_application = m_program.start({u"--background"_s});
        QTRY_COMPARE_WITH_TIMEOUT(status(), "idle", patience);
    }

    void cleanup()
    {
        QVERIFY2(m_application->state() == QProcess::Running, "the program has ended");
        if (QTest::currentTestFailed())
            (void)m_program.run({u"cancel"_s});
        QTRY_COMPARE_WITH_TIMEOUT(status(), "idle", patience);
        QCOMPARE(m_keyboard.pressedKeys(), QList<int>());
        QCOMPARE(m_program.temporaryFiles(), QStringList());
    }

    void putsSpeechIntoTheEditor_data()
    {
        const Rows<Kind, QString, QString> row("editor", "recording", "said");
        const QString english =
            u"And so my fellow Americans ask not what your country can do for you ask what you "
            "can do for your country"_s;
        QFile text(fixture(u"russian.txt"_s));
        QVERIFY(text.open(QFile::ReadOnly));
        const QString russian = QString::fromUtf8(text.readAll());
        row("GTK, English", Kind::Gtk, fixture(u"jfk.wav"_s), english);
        row("Qt, English", Kind::Qt, fixture(u"jfk.wav"_s), english);
        row("terminal, English", Kind::Terminal, fixture(u"jfk.wav"_s), english);
        row("GTK, Russian", Kind::Gtk, fixture(u"russian.wav"_s), russian);
        row("Qt, Russian", Kind::Qt, fixture(u"russian.wav"_s), russian);
        row("terminal, Russian", Kind::Terminal, fixture(u"russian.wav"_s), russian);
    }

    void putsSpeechIntoTheEditor()
    {
        QFETCH(const Kind, editor);
        QFETCH(const QString, recording);
        QFETCH(const QString, said);
        FocusedEditor focused(editor);
        const QString window = m_keyboard.focusedClass();

        beginDictation();
        m_sound.speak(microphone, recording);
        QCOMPARE(m_keyboard.focusedClass(), window);
        endDictation();
        QTRY_COMPARE_WITH_TIMEOUT(status(), "idle", patience);

        QTRY_VERIFY_WITH_TIMEOUT(!focused.text().trimmed().isEmpty(), patience);
        QCOMPARE(m_keyboard.focusedClass(), window);
        const QString text = focused.text().trimmed(); // an editor may end its file with a line break
        QCOMPARE(text, clipboard());
        VERIFY_WORDS(text, said);
    }

    void silenceGivesNothing()
    {
        FocusedEditor focused(Kind::Terminal);
        beginDictation();
        QTest::qWait(1500);
        endDictation();
        QTRY_COMPARE_WITH_TIMEOUT(status(), "idle", patience);
        QTest::qWait(300);
        QCOMPARE(focused.text(), QString());
    }

    void pressesThatAreNoDoublePress_data()
    {
        const Rows<Key, int> row("second", "gap");
        row("too slow", Key::RightCtrl, 700);
        row("another right-hand key", Key::RightAlt, 120);
    }

    void pressesThatAreNoDoublePress()
    {
        QFETCH(const Key, second);
        QFETCH(const int, gap);
        m_keyboard.tap(Key::RightCtrl);
        QTest::qWait(gap);
        m_keyboard.tap(second);
        QTest::qWait(300);
        QCOMPARE(status(), "idle");
        QTest::qWait(300); // so that the next press is no pair with this
    }

    void escapeCancels_data()
    {
        const Rows<QByteArray> row("state");
        row("recording", "recording");
        row("transcribing", "transcribing");
    }

    void escapeCancels()
    {
        QFETCH(const QByteArray, state);
        FocusedEditor focused(Kind::Terminal);
        m_keyboard.tap(Key::F5);
        QTRY_COMPARE_WITH_TIMEOUT(status(), "recording", patience);
        m_sound.speak(microphone, m_speech);
        if (state == "transcribing") {
            m_keyboard.tap(Key::F5);
            QTRY_COMPARE_WITH_TIMEOUT(status(), state, patience);
        }
        m_keyboard.tap(Key::Escape);
        QTRY_COMPARE_WITH_TIMEOUT(status(), "idle", patience);
        QTest::qWait(300);
        QCOMPARE(focused.text(), QString()); // neither F5 nor Esc nor the speech
        m_keyboard.tap(Key::Escape);
        QTRY_COMPARE_WITH_TIMEOUT(focused.text(), u"\x1b"_s, patience);
    }

    void engineIsKilled()
    {
        FocusedEditor focused(Kind::Terminal);
        beginDictation();
        m_sound.speak(microphone, m_speech);
        QTRY_COMPARE_WITH_TIMEOUT(m_program.enginesOf(*m_application).size(), 1, patience);
        const auto engine = static_cast<pid_t>(m_program.enginesOf(*m_application).constFirst());
        ::kill(engine, SIGSTOP); // else it could be done before it is killed
        endDictation();
        QTRY_COMPARE_WITH_TIMEOUT(status(), "transcribing", patience);
        ::kill(engine, SIGKILL);
        QTRY_COMPARE_WITH_TIMEOUT(status(), "idle", patience);
        // One that was still loading is started anew.
        const QString pasted = focused.text();
        QVERIFY(pasted.isEmpty() || wordError(pasted, sentence) <= maxWordError);

        beginDictation();
        m_sound.speak(microphone, m_speech);
        endDictation();
        QTRY_VERIFY_WITH_TIMEOUT(wordError(focused.text().mid(pasted.size()), sentence) <= maxWordError,
                                 patience);
    }

    void isControlledByCommands()
    {
        FocusedEditor focused(Kind::Terminal);
        const auto refused = m_program.run({u"stop"_s});
        QCOMPARE(refused.exitCode, 1);
        QCOMPARE(refused.complaints, u"Диктовка сейчас не записывается.\n"_s.toUtf8());

        QCOMPARE(m_program.run({u"toggle"_s}).exitCode, 0);
        QTRY_COMPARE_WITH_TIMEOUT(status(), "recording", patience);
        QCOMPARE(m_program.run({u"start"_s}).exitCode, 1);
        m_sound.speak(microphone, m_speech);
        QCOMPARE(m_program.run({u"toggle"_s}).exitCode, 0);
        QTRY_VERIFY_WITH_TIMEOUT(wordError(focused.text(), sentence) <= maxWordError, patience);

        const auto started = m_program.run({u"start"_s});
        QVERIFY2(started.exitCode == 0, started.complaints.constData());
        QTRY_COMPARE_WITH_TIMEOUT(status(), "recording", patience);
        QCOMPARE(m_program.run({u"cancel"_s}).exitCode, 0);
        QCOMPARE(status(), "idle");
    }

    /// Some are given up at a random moment. ORVANE_SOAK_COUNT says how many, ORVANE_SOAK_SEED which moments.
    void manyInARow()
    {
        const int count = qEnvironmentVariable("ORVANE_SOAK_COUNT", u"10"_s).toInt();
        std::mt19937 random(qEnvironmentVariable("ORVANE_SOAK_SEED", u"1"_s).toUInt());
        FocusedEditor focused(Kind::Terminal);
        QString pasted;
        Holdings settled;
        for (int i = 0; i < count; ++i) {
            QString expected = sentence;
            beginDictation();
            const auto speech = m_sound.startSpeaking(microphone, m_speech);
            // Until then nothing of it has been recognised, or some of it is being, or all of it has been.
            const auto endSpeech = [&] {
                speech->waitForFinished();
                QTest::qWait(static_cast<int>(random() % 3000));
                endDictation();
            };
            if (random() % 3 == 0) {
                if (random() % 2 == 0)
                    endSpeech();
                QTest::qWait(static_cast<int>(random() % 6000));
                // What was too late has become a text.
                if (m_program.run({u"cancel"_s}).exitCode == 0)
                    expected.clear();
            } else {
                endSpeech();
            }
            QTRY_COMPARE_WITH_TIMEOUT(status(), "idle", patience);
            QTRY_VERIFY_WITH_TIMEOUT(wordError(focused.text().mid(pasted.size()), expected) <= maxWordError,
                                     patience);
            pasted = focused.text();
            QCOMPARE(m_keyboard.pressedKeys(), QList<int>());
            QVERIFY(m_program.enginesOf(*m_application).size() <= 1);
            if (i + 1 == settlingCount)
                settled = holdingsOf(m_application->processId());
        }
        qInfo("%d dictations, %lld words pasted", count, static_cast<long long>(wordsOf(pasted).size()));
        if (count <= settlingCount)
            return;
        const Holdings last = holdingsOf(m_application->processId());
        qInfo("after %d: %lld KiB, %lld open files; now: %lld KiB, %lld open files", settlingCount,
              static_cast<long long>(settled.residentKiB), static_cast<long long>(settled.openFiles),
              static_cast<long long>(last.residentKiB), static_cast<long long>(last.openFiles));
        QVERIFY(last.residentKiB <= settled.residentKiB + maxGrowthKiB);
        QVERIFY(last.openFiles <= settled.openFiles + fewFiles);
    }

    /// The last one: it brings the window forward.
    void oneInstance()
    {
        const auto second = m_program.run({});
        QCOMPARE(second.exitCode, 0);
        QCOMPARE(second.complaints, u"Orvane уже работает.\n"_s.toUtf8());
    }

private:
    [[nodiscard]] QByteArray status() const { return m_program.run({u"status"_s}).output.trimmed(); }

    void pressTwice(Key key, int gap = 60)
    {
        m_keyboard.tap(key);
        QTest::qWait(gap);
        m_keyboard.tap(key);
    }

    void beginDictation()
    {
        pressTwice(Key::RightCtrl);
        QTRY_COMPARE_WITH_TIMEOUT(status(), "recording", patience);
    }

    void endDictation() { pressTwice(Key::RightCtrl); }

    OrvaneProgram m_program;
    Surroundings m_surroundings{m_program};
    SoundServer &m_sound = m_surroundings.sound();
    XKeyboard m_keyboard;
    std::unique_ptr<QProcess> m_application;
    QString m_speech;
};

ORVANE_DISPLAY_TEST_MAIN(DictationTest, QGuiApplication)
#include "tst_dictation.moc"

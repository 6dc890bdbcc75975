#include "diagnostics/MicrophoneCheck.h"
#include "tests/support/SoundServer.h"
#include "tests/support/TaskResult.h"

#include <QProcess>
#include <QSignalSpy>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace orvane;
using namespace std::chrono_literals;

using State = CheckResult::State;
using test::SoundServer;

class TestMicrophoneCheck : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        if (!SoundServer::isInstalled())
            QSKIP("pulseaudio is not installed");
    }

    void listens_data()
    {
        QTest::addColumn<bool>("isThere");
        QTest::addColumn<bool>("isSpokenInto");
        QTest::addColumn<State>("state");
        QTest::newRow("spoken into") << true << true << State::Good;
        QTest::newRow("switched off") << true << false << State::Bad;
        QTest::newRow("none") << false << false << State::Bad;
    }

    void listens()
    {
        QFETCH(const bool, isThere);
        QFETCH(const bool, isSpokenInto);
        QFETCH(const State, state);
        SoundServer server;
        server.enter();
        if (isThere)
            server.plugIn(microphone);
        SoundServer::Speech speech;
        if (isSpokenInto)
            speech = server.startSpeaking(microphone, noise());

        MicrophoneCheck check(QStringLiteral(ORVANE_RESOURCES), 1s);
        bool hasListened = false;
        connect(&check, &MicrophoneCheck::levelChanged, this, [&] { hasListened |= check.isListening(); });
        const TaskResult result(check.run({}));
        QTRY_VERIFY_WITH_TIMEOUT(result.isDone(), 20'000);

        QCOMPARE(hasListened, isThere);
        QVERIFY(!check.isListening());
        QCOMPARE(result.succeeded() ? result.value().state : State::Bad, state);
        const QString text = result.succeeded() ? result.value().text : result.error();
        QVERIFY2(!text.isEmpty() && text.contains(shownName) == isThere, qPrintable(text));
    }

    void endsWhenItIsStopped()
    {
        SoundServer server;
        server.enter();
        server.plugIn(microphone);
        MicrophoneCheck check(QStringLiteral(ORVANE_RESOURCES), 1h);
        std::stop_source stop;
        const TaskResult result(check.run(stop.get_token()));
        QTRY_VERIFY_WITH_TIMEOUT(check.isListening(), 20'000);
        stop.request_stop();
        QTRY_VERIFY(result.isCancelled());
        QVERIFY(!check.isListening());
    }

private:
    static inline const QString microphone = u"mic"_s;
    static inline const QString shownName = u"Monitor of Null Output"_s;

    /// Seconds of it.
    [[nodiscard]] QString noise() const
    {
        const QString file = m_folder.filePath(u"noise.wav"_s);
        QProcess::execute(u"ffmpeg"_s, {u"-nostdin"_s, u"-v"_s, u"error"_s, u"-y"_s, u"-f"_s, u"lavfi"_s,
                                        u"-i"_s, u"anoisesrc=d=20:r=48000"_s, file});
        return file;
    }

    const QTemporaryDir m_folder;
};

QTEST_GUILESS_MAIN(TestMicrophoneCheck)
#include "tst_microphonecheck.moc"

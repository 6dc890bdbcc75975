#include "audio/AudioDecoder.h"
#include "engine/EngineProcessRegistry.h"
#include "history/TranscriptExporter.h"
#include "meeting/MeetingTranscriber.h"
#include "meeting/MicrophoneSource.h"
#include "recognition/WhisperServerEngine.h"
#include "settings/UserDefaults.h"
#include "tests/support/Dialogue.h"
#include "tests/support/SoundServer.h"
#include "tests/support/TaskResult.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace orvane;

namespace {

constexpr int patience = 240'000; // a machine that builds something beside
constexpr int gone = 10'000;      // milliseconds
const QString microphone = u"table"_s;

} // namespace

/// Two voices at a microphone, the real engine and all that comes after it.
class TestRealMeeting : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void tellsTwoVoicesApart();
};

void TestRealMeeting::tellsTwoVoicesApart()
{
    if (!test::SoundServer::isInstalled() || !test::Dialogue::canSpeak())
        QSKIP("pulseaudio, pactl, flite or ffmpeg is missing; ./test installs them");
    const QString resources = QStringLiteral(ORVANE_RESOURCES);
    const QTemporaryDir folder;
    const StandardFolders folders{
        .applicationSupport = folder.path(), .resources = resources, .temporary = folder.path()};
    QDir().mkpath(folders.models());
    QVERIFY(QFile::link(qEnvironmentVariable("ORVANE_TEST_MODELS") + u"/ggml-base.bin"_s,
                        folders.models() + u"/ggml-base.bin"_s));

    UserDefaults defaults(folder.filePath(u"settings.json"_s));
    AppSettings settings(defaults);
    settings.setLanguageCode(u"en"_s);
    settings.setDetectSpeakers(true);
    ModelManager models(folders.models());
    HistoryStore history(folders);
    EngineProcessRegistry registry{QString()};
    const QString engineFolder = QFileInfo(qEnvironmentVariable("ORVANE_TEST_ENGINE")).path();
    WhisperServerEngine engine({.resources = {}, .folders = {engineFolder}}, registry, folder.path());
    const EngineTurns turns;
    const AudioDecoder decoder(resources);
    TranscriptPipeline pipeline(engine, decoder);
    MeetingTranscriber meeting(
        {.models = models,
         .settings = settings,
         .history = history,
         .pipeline = pipeline,
         .turns = turns,
         .makeSource = [&resources] { return std::make_unique<MicrophoneSource>(resources); }},
        folders.recordings());

    const test::Dialogue dialogue(folder.path());
    test::SoundServer room;
    room.enter();
    room.plugIn(microphone);
    const TaskResult started(meeting.start());
    QTRY_VERIFY(started.isDone());
    QCOMPARE(meeting.errorText(), QString());
    for (const test::Dialogue::Turn &turn : dialogue.turns()) {
        const auto speaking = room.startSpeaking(microphone, turn.sound);
        QTRY_COMPARE_WITH_TIMEOUT(speaking->state(), QProcess::NotRunning, 30'000);
        QVERIFY(meeting.isRunning());
        if (turn.sound == dialogue.turns()[1].sound) {
            // In the middle of the meeting the microphone goes and comes back.
            room.unplug(microphone);
            QTRY_VERIFY(meeting.statusText().endsWith(u" · микрофон молчит"_s));
            QTest::qWait(gone);
            room.plugIn(microphone);
            const auto cough = room.startSpeaking(microphone, turn.sound); // until it is heard again
            QTRY_COMPARE(meeting.statusText(), u"Идёт запись…"_s);
        }
    }
    meeting.stop();
    QTRY_VERIFY_WITH_TIMEOUT(!meeting.isTranscribing(), patience);
    QCOMPARE(meeting.errorText(), QString());

    const TaskResult read(history.record(meeting.lastRecordID()));
    QTRY_VERIFY(read.isDone());
    QVERIFY2(read.succeeded(), qPrintable(meeting.statusText()));
    const auto &record = read.value();
    QMap<qint64, int> heard;
    for (const TranscriptRecord::Segment &segment : record.segments) {
        const std::optional<qint64> speaker = test::Dialogue::speakerOf(segment.text);
        if (!speaker)
            continue;
        ++heard[*speaker];
        QVERIFY2(segment.speaker == speaker,
                 qPrintable(u"%1 is said to speak: %2"_s.arg(segment.speaker.value_or(0)).arg(segment.text)));
    }
    QVERIFY2(heard[1] >= 2 && heard[2] >= 2, qPrintable(record.text));
    QVERIFY(record.playableURL(folders.recordings()));

    const QString markdown =
        TranscriptExporter::markdown(record.title, record.displaySegments(), record.text);
    QVERIFY2(markdown.count(u"**Спикер 1**"_s) >= 2 && markdown.count(u"**Спикер 2**"_s) >= 1,
             qPrintable(markdown));
    const TaskResult stopped(engine.stopAndWait());
    QTRY_VERIFY(stopped.isDone());
}

QTEST_GUILESS_MAIN(TestRealMeeting)
#include "tst_realmeeting.moc"

#include "tests/meeting/MeetingHome.h"
#include "tests/support/FakeEngineHome.h"
#include "tests/support/TaskResult.h"

#include <QFile>
#include <QFileInfo>
#include <QSignalSpy>
#include <QTest>

#include <csignal>
#include <sys/resource.h>

using namespace Qt::StringLiterals;
using namespace orvane;

namespace {

const QString inference = u"/inference"_s;
const QString recording = u"Идёт запись…"_s;
const QString preparing = u"Подготовка записи…"_s;
const QString saved = u"Совещание сохранено · 2 сегментов · аудио в истории"_s;
const QString cancelled = u"Расшифровка отменена · аудиозапись сохранена"_s;
const QString silent = u"Готово · речь не распознана (запись сохранена)"_s;
const QString wait = u"Дождитесь завершения текущей операции — движок выполняет их по одной"_s;
const QByteArray twoSegments =
    R"({"segments":[{"start":0,"end":1,"text":" one"},{"start":1,"end":1.5,"text":" [noise] "},
        {"start":2,"end":2.5,"text":" two"}]})";

FakeEngineBehaviour answering(const FakeAnswer &answer)
{
    return {.answers = {{inference, {answer}}}};
}

/// While it lives, no file of this process grows beyond that size, as on a full disk.
class FileSizeLimit
{
public:
    explicit FileSizeLimit(qint64 bytes)
    {
        std::signal(SIGXFSZ, SIG_IGN);
        ::getrlimit(RLIMIT_FSIZE, &m_before);
        const rlimit limit{.rlim_cur = static_cast<rlim_t>(bytes), .rlim_max = m_before.rlim_max};
        ::setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FileSizeLimit() { ::setrlimit(RLIMIT_FSIZE, &m_before); }
    Q_DISABLE_COPY_MOVE(FileSizeLimit)

private:
    rlimit m_before{};
};

} // namespace

class TestMeetingTranscriber : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void recordsAndSaves();
    void keepsWhatWasChosenAtTheStart();
    void withoutSpeech();
    void stoppedAtOnce();
    void doesNotStart_data();
    void doesNotStart();
    void failures_data();
    void failures();
    void cancelling_data();
    void cancelling();
    void waitsForItsTurn();
    void refusesWhatDoesNotFit();
    void fullDisk();
    void warnsWhileRecording();
    void quitting_data();
    void quitting();
    void recordSavedBeforeKill();
    void recordNotSaved();
    void failingAgain();
    void dismissing();

private:
    void restart();
    void record(double seconds);
    void recordAndStop(double seconds);
    [[nodiscard]] MeetingTranscriber &meeting() { return m_home->meeting(); }

    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<FakeEngineHome> m_engine;
    std::unique_ptr<MeetingHome> m_home;
    QStringList m_statuses;
};

void TestMeetingTranscriber::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    m_engine = std::make_unique<FakeEngineHome>(u"whisper-server"_s);
    m_engine->behave(answering({.body = twoSegments}));
    restart();
}

/// The program ends and starts again.
void TestMeetingTranscriber::restart()
{
    m_home = nullptr;
    m_home = std::make_unique<MeetingHome>(m_folder->path(), m_engine->resources());
    m_statuses.clear();
    connect(&meeting(), &MeetingTranscriber::statusTextChanged, this,
            [this] { m_statuses.append(meeting().statusText()); });
    const TaskResult found(meeting().findLeftovers());
    QTRY_VERIFY(found.succeeded());
}

void TestMeetingTranscriber::cleanup()
{
    m_home = nullptr;
    QTRY_VERIFY(m_engine->allEnded());
    QCoreApplication::processEvents(); // what waited for that goes on
}

void TestMeetingTranscriber::record(double seconds)
{
    const TaskResult started(meeting().start());
    QTRY_VERIFY(started.succeeded());
    QCOMPARE(meeting().errorText(), QString());
    QVERIFY(meeting().isRunning());
    m_home->microphone().hearPattern(seconds);
}

void TestMeetingTranscriber::recordAndStop(double seconds)
{
    record(seconds);
    meeting().stop();
    QVERIFY(meeting().isTranscribing());
}

void TestMeetingTranscriber::recordsAndSaves()
{
    const QDateTime before = QDateTime::currentDateTime();
    record(2.25);
    QCOMPARE(meeting().statusText(), recording);
    QTRY_VERIFY(meeting().elapsed() >= 0.5);
    QCOMPARE(m_home->markers().size(), 1);
    const QString name = m_home->audio().value(0);
    QVERIFY2(QRegularExpression(u"^Совещание \\d{4}-\\d\\d-\\d\\d \\d\\d\\.\\d\\d\\.\\d\\d\\.wav$"_s)
                 .match(name)
                 .hasMatch(),
             qPrintable(name));
    constexpr auto ownerOnly = QFile::ReadOwner | QFile::WriteOwner | QFile::ReadUser | QFile::WriteUser;
    for (const QFileInfo &file : m_home->recordings().entryInfoList(QDir::Files))
        QCOMPARE(file.permissions(), ownerOnly);
    QCOMPARE(QFileInfo(m_home->recordings().path()).permissions(),
             ownerOnly | QFile::ExeOwner | QFile::ExeUser);

    meeting().stop();
    meeting().stop(); // a second time does nothing
    QTRY_VERIFY(!meeting().isTranscribing());
    QCOMPARE(meeting().errorText(), QString());
    QCOMPARE(m_statuses, (QStringList{recording, preparing, u"Расшифровка записи (0:00)…"_s, saved}));
    QCOMPARE(m_home->patternIn(name), 36'000);

    QCOMPARE(m_home->history().records().size(), 1);
    const TranscriptRecord record = m_home->history().records().first();
    QCOMPARE(record.id, meeting().lastRecordID());
    QCOMPARE(record.kind, TranscriptKind::Meeting);
    QVERIFY2(record.title.startsWith(u"Совещание · "_s), qPrintable(record.title));
    QVERIFY(record.createdAt >= before && record.createdAt <= QDateTime::currentDateTime());
    QCOMPARE(record.modelID, u"base"_s);
    QCOMPARE(record.languageCode, u"ru"_s);
    QCOMPARE(record.durationMs, 2500);
    QCOMPARE(record.text, u"one two"_s);
    QCOMPARE(record.segments.size(), 2);
    QCOMPARE(record.audioFileName, name);
    QTRY_COMPARE(m_home->markers(), QStringList());
}

void TestMeetingTranscriber::keepsWhatWasChosenAtTheStart()
{
    m_home->installModel(u"small"_s);
    m_home->settings().setSelectedModelID(u"small"_s);
    m_home->settings().setLanguageCode(u"en"_s);
    record(1);
    m_home->settings().setSelectedModelID(u"base"_s);
    m_home->settings().setLanguageCode(u"de"_s);
    meeting().stop();
    QTRY_COMPARE(meeting().statusText(), saved);
    QCOMPARE(m_home->history().records().first().modelID, u"small"_s);
    QCOMPARE(m_home->history().records().first().languageCode, u"en"_s);
    QVERIFY(m_engine->launches().first().arguments.contains(m_home->models().localPath(u"small"_s)));
}

void TestMeetingTranscriber::withoutSpeech()
{
    m_engine->behave(answering({.body = R"json({"segments":[{"text":" [BLANK_AUDIO]"},{"text":"(Music)"},
        {"text":" *coughs*"},{"text":"  "}]})json"}));
    recordAndStop(1);
    QTRY_COMPARE(meeting().statusText(), silent);
    QVERIFY(!meeting().isTranscribing());
    QVERIFY(m_home->history().records().isEmpty());
    QVERIFY(meeting().lastRecordID().isNull());
    QTRY_COMPARE(m_home->markers(), QStringList());
    QCOMPARE(m_home->patternIn(m_home->audio().value(0)), 16'000);
}

void TestMeetingTranscriber::stoppedAtOnce()
{
    m_engine->behave(answering({.status = 400})); // as to a file without a sample
    recordAndStop(0);
    QTRY_COMPARE(meeting().statusText(), silent);
    QCOMPARE(meeting().errorText(), QString());
    QTRY_COMPARE(m_home->markers(), QStringList());
    QCOMPARE(m_home->audio().size(), 1);
}

void TestMeetingTranscriber::doesNotStart_data()
{
    QTest::addColumn<QString>("reason");
    QTest::addColumn<QString>("error");
    QTest::newRow("no access") << u"access"_s
                               << u"Нет доступа к микрофону. Разрешите его в Системных настройках → "
                                  "Конфиденциальность → Микрофон."_s;
    QTest::newRow("no microphone") << u"microphone"_s << u"Не удалось начать запись: no microphone"_s;
    QTest::newRow("no folder") << u"folder"_s << u"Не удалось начать запись: Не удалось записать файл"_s;
}

void TestMeetingTranscriber::doesNotStart()
{
    QFETCH(const QString, reason);
    QFETCH(const QString, error);
    m_home->setMicrophoneAllowed(reason != u"access");
    if (reason == u"microphone")
        m_home->control().startError = u"no microphone"_s;
    QFile inTheWay(m_home->recordings().path());
    if (reason == u"folder")
        QVERIFY(inTheWay.open(QFile::WriteOnly));
    const TaskResult started(meeting().start());
    QVERIFY(!meeting().canStart()); // while it starts
    QTRY_VERIFY(started.succeeded());
    QVERIFY2(meeting().errorText().startsWith(error), qPrintable(meeting().errorText()));
    QVERIFY(!meeting().isRunning());
    QCOMPARE(m_home->recordings().entryList(QDir::Files), QStringList());

    m_home->setMicrophoneAllowed(true);
    m_home->control().startError.clear();
    inTheWay.remove();
    record(1);
}

void TestMeetingTranscriber::failures_data()
{
    QTest::addColumn<QString>("what");
    QTest::addColumn<FakeEngineBehaviour>("behaviour");
    QTest::addColumn<QString>("error");
    const FakeEngineBehaviour good = answering({.body = twoSegments});
    QTest::newRow("engine missing") << u"engine"_s << good
                                    << u"Движок распознавания не установлен. В Терминале выполните: brew "
                                       "install whisper-cpp"_s;
    QTest::newRow("model deleted") << u"model"_s << good << u"Модель распознавания недоступна."_s;
    QTest::newRow("engine does not start")
        << QString() << FakeEngineBehaviour{.exitAfterMs = 0}
        << u"Не удалось запустить движок распознавания: процесс неожиданно завершился"_s;
    QTest::newRow("engine killed") << QString() << answering({.ending = FakeAnswer::Ending::EngineDies})
                                   << u"Ошибка распознавания: сервер закрыл соединение"_s;
    QTest::newRow("engine fails") << QString() << answering({.status = 500})
                                  << u"Ошибка распознавания: HTTP 500"_s;
}

/// The audio stays, is offered, and transcribed when the reason is gone.
void TestMeetingTranscriber::failures()
{
    QFETCH(const QString, what);
    QFETCH(const FakeEngineBehaviour, behaviour);
    QFETCH(const QString, error);
    m_engine->behave(behaviour);
    record(1);
    const QString name = m_home->audio().value(0);
    const QString gone = what == u"engine"  ? m_engine->executable()
                         : what == u"model" ? m_home->models().localPath(u"base"_s)
                                            : QString();
    if (!gone.isEmpty())
        QVERIFY(QFile::rename(gone, gone + u".gone"_s));
    meeting().stop();
    QTRY_VERIFY(!meeting().isTranscribing());
    QCOMPARE(meeting().errorText(), error);
    QCOMPARE(meeting().statusText(), u"Ошибка расшифровки (запись сохранена: %1)"_s.arg(name));
    QVERIFY(m_home->history().records().isEmpty());
    QCOMPARE(m_home->patternIn(name), 16'000);
    QCOMPARE(m_home->markers().size(), 1);

    if (!gone.isEmpty())
        QVERIFY(QFile::rename(gone + u".gone"_s, gone));
    m_engine->behave(answering({.body = twoSegments}));
    meeting().transcribeLeftover(name);
    QTRY_VERIFY(!meeting().isTranscribing());
    QCOMPARE(meeting().errorText(), QString());
    QCOMPARE(m_home->history().records().size(), 1);
    QTRY_VERIFY(meeting().leftovers().isEmpty() && m_home->markers().isEmpty());
}

void TestMeetingTranscriber::cancelling_data()
{
    QTest::addColumn<FakeEngineBehaviour>("behaviour");
    QTest::addColumn<int>("launches");
    QTest::addColumn<int>("requests");
    const FakeEngineBehaviour never = answering(FakeAnswer::never());
    QTest::newRow("completing the file") << never << 0 << 0;
    QTest::newRow("loading") << FakeEngineBehaviour{.port = FakeEngineBehaviour::Port::StaysShut} << 1 << 0;
    QTest::newRow("recognising, never answered") << never << 1 << 1;
}

void TestMeetingTranscriber::cancelling()
{
    QFETCH(const FakeEngineBehaviour, behaviour);
    QFETCH(const int, launches);
    QFETCH(const int, requests);
    m_engine->behave(behaviour);
    m_home->control().stopMs = launches == 0 ? 300 : 0;
    record(1.5);
    const QString name = m_home->audio().value(0);
    QVERIFY(!meeting().cancelRefusal().isEmpty());
    meeting().cancelTranscription(); // not while it records
    QVERIFY(meeting().isRunning());
    meeting().stop();
    QTRY_VERIFY(m_engine->launches().size() == launches && m_engine->requests(inference).size() == requests);
    meeting().cancelTranscription();
    QVERIFY(!meeting().isTranscribing());
    QCOMPARE(meeting().statusText(), cancelled);

    // At once the next one, which nothing of the first disturbs.
    m_engine->behave(answering({.body = twoSegments}));
    m_home->control().stopMs = 0;
    record(1);
    QTRY_COMPARE(m_home->patternIn(name), 24'000);
    QTRY_COMPARE(m_home->markers().size(), 1);
    QVERIFY(!m_home->markers().first().startsWith(name));
    QVERIFY(meeting().isRunning());
    meeting().stop();
    QTRY_COMPARE(meeting().statusText(), saved);
    QCOMPARE(m_home->history().records().size(), 1);
    QVERIFY(m_home->history().records().first().audioFileName != name);
    QVERIFY(meeting().leftovers().isEmpty());
    QTRY_COMPARE(m_engine->abandoned(inference), requests); // the engine was freed
}

void TestMeetingTranscriber::waitsForItsTurn()
{
    EngineTurns::Turn turn = m_home->turns().take();
    recordAndStop(1);
    QTRY_COMPARE(meeting().statusText(), wait);
    meeting().cancelTranscription();
    recordAndStop(1);
    QTRY_COMPARE(meeting().statusText(), wait);
    QCOMPARE(m_engine->launches().size(), 0);
    turn.reset();
    QTRY_COMPARE(meeting().statusText(), saved);
    QVERIFY(!m_home->turns().isTaken());
}

void TestMeetingTranscriber::refusesWhatDoesNotFit()
{
    QCOMPARE(meeting().startRefusal(), QString());
    QCOMPARE(meeting().stopRefusal(), u"Запись совещания не идёт."_s);
    QCOMPARE(meeting().cancelRefusal(), u"Расшифровка совещания не идёт."_s);
    QCOMPARE(meeting().leftoverRefusal(), u"Нерасшифрованных записей нет."_s);
    meeting().stop();
    meeting().cancelTranscription();
    QCOMPARE(m_statuses, QStringList());

    record(1);
    QCOMPARE(meeting().startRefusal(), u"Запись совещания уже идёт."_s);
    QCOMPARE(meeting().cancelRefusal(), u"Идёт запись: её завершает команда orvane meeting stop."_s);
    QCOMPARE(meeting().leftoverRefusal(), u"Запись совещания уже идёт."_s);
    meeting().reset();
    QCOMPARE(meeting().statusText(), recording);
    meeting().stop();
    QCOMPARE(meeting().startRefusal(), wait);
    QCOMPARE(meeting().leftoverRefusal(), wait);
    const TaskResult again(meeting().start()); // does nothing
    QVERIFY(again.succeeded());
    QTRY_COMPARE(meeting().statusText(), saved);
    QCOMPARE(m_home->audio().size(), 1);

    meeting().reset();
    QCOMPARE(meeting().statusText() + meeting().transcript(), QString());
    QVERIFY(meeting().segments().isEmpty() && meeting().lastRecordID().isNull());
    QCOMPARE(meeting().elapsed(), 0.0);

    QVERIFY(QFile::remove(m_home->models().localPath(u"base"_s)));
    m_home->models().refresh();
    QCOMPARE(meeting().startRefusal(), u"Модель распознавания недоступна."_s);
}

void TestMeetingTranscriber::fullDisk()
{
    m_engine->behave(answering({.body = twoSegments}));
    record(1);
    const QString name = m_home->audio().value(0);
    const auto size = [&] { return QFileInfo(m_home->recordings().filePath(name)).size(); };
    QTRY_COMPARE(size(), 44 + 32'000);
    {
        const FileSizeLimit full(44 + 32'000 + 20'000);
        m_home->microphone().hearPattern(3);
        QTest::qWait(200);
        QVERIFY(meeting().isRunning());
    }
    meeting().stop();
    QTRY_COMPARE(meeting().statusText(), saved);
    QCOMPARE(meeting().errorText(), u"Запись сохранена частично — возможно, на диске не хватило места."_s);
    QVERIFY(m_home->patternIn(name) >= 16'000);
}

void TestMeetingTranscriber::warnsWhileRecording()
{
    m_home->setFreeSpace(14LL * 60 * 32'000 + 31'999);
    record(1);
    QCOMPARE(meeting().statusText(), recording + u" · на диске осталось места на 14 мин"_s);
    m_home->setFreeSpace(15LL * 60 * 32'000);
    QTRY_COMPARE_WITH_TIMEOUT(meeting().statusText(), recording, 20'000);
    m_home->microphone().setSilent(true);
    QCOMPARE(meeting().statusText(), recording + u" · микрофон молчит"_s);
    m_home->microphone().setSilent(false);
    QCOMPARE(meeting().statusText(), recording);
}

void TestMeetingTranscriber::quitting_data()
{
    QTest::addColumn<QString>("when");
    for (const QString &when : {u"recording"_s, u"completing"_s, u"recognising"_s})
        QTest::newRow(qPrintable(when)) << when;
}

/// The next start offers the recording; it becomes a record like any other.
void TestMeetingTranscriber::quitting()
{
    QFETCH(const QString, when);
    m_engine->behave(answering(FakeAnswer::never()));
    m_home->control().stopMs = 100;
    const QDateTime before = QDateTime::currentDateTime();
    record(61.25);
    const QDateTime after = QDateTime::currentDateTime();
    if (when != u"recording")
        meeting().stop();
    if (when == u"recognising")
        QTRY_COMPARE(m_engine->requests(inference).size(), 1);
    const TaskResult finished(meeting().finishForQuit());
    QTRY_VERIFY(finished.succeeded());
    const QString name = m_home->audio().value(0);
    QCOMPARE(m_home->patternIn(name), 980'000);
    QVERIFY(!meeting().canStart());

    restart();
    QCOMPARE(meeting().leftovers().size(), 1);
    const RecordedMeeting left = meeting().leftovers().first();
    QCOMPARE(left.audioFileName, name);
    QCOMPARE(left.durationMs, 61'250);
    QVERIFY2(meeting().leftoverNotice().contains(u"1:01"_s), qPrintable(meeting().leftoverNotice()));
    m_engine->behave(answering({.body = twoSegments}));
    {
        const EngineTurns::Turn turn = m_home->turns().take();
        meeting().transcribeLeftover(name);
        QCOMPARE(meeting().errorText(), wait);
        QCOMPARE(meeting().leftoverRefusal(), wait);
    }
    QCOMPARE(meeting().leftoverRefusal(), QString());
    meeting().transcribeLeftover(name);
    QTRY_COMPARE(meeting().statusText(), saved);
    QVERIFY(m_statuses.contains(u"Расшифровка записи (1:01)…"_s));
    const TranscriptRecord record = m_home->history().records().first();
    QVERIFY(record.createdAt >= before && record.createdAt <= after);
    QCOMPARE(record.audioFileName, name);

    QTRY_COMPARE(m_home->markers(), QStringList());
    restart();
    QVERIFY(meeting().leftovers().isEmpty());
    QCOMPARE(m_home->history().records().size(), 1);
}

void TestMeetingTranscriber::recordSavedBeforeKill()
{
    record(1);
    const QString marker = m_home->recordings().filePath(m_home->markers().value(0));
    QVERIFY(QFile::copy(marker, marker + u".copy"_s));
    meeting().stop();
    QTRY_COMPARE(m_home->markers(), QStringList());
    QVERIFY(QFile::rename(marker + u".copy"_s, marker)); // as if the kill had come before its removal
    restart();
    QVERIFY(meeting().leftovers().isEmpty());
    QTRY_COMPARE(m_home->markers(), QStringList());
    QCOMPARE(m_home->audio().size(), 1);
}

void TestMeetingTranscriber::recordNotSaved()
{
    const QString history = m_folder->filePath(u"Orvane/History"_s);
    QVERIFY(QDir(history).removeRecursively());
    QFile inTheWay(history);
    QVERIFY(inTheWay.open(QFile::WriteOnly));
    recordAndStop(1);
    QTRY_VERIFY2(meeting().errorText().startsWith(u"Не удалось сохранить запись: "_s),
                 qPrintable(meeting().errorText()));
    QCOMPARE(m_home->history().records().size(), 1); // until the program ends
    QVERIFY(inTheWay.remove());
    restart();
    QCOMPARE(meeting().leftovers().size(), 1);
}

/// A recording that cannot be transcribed keeps no other from its turn.
void TestMeetingTranscriber::failingAgain()
{
    m_engine->behave(answering({.status = 500}));
    for (int i = 0; i < 2; ++i) {
        recordAndStop(1);
        QTRY_VERIFY(!meeting().isTranscribing());
    }
    const QList<RecordedMeeting> before = meeting().leftovers();
    QCOMPARE(before.size(), 2);
    meeting().transcribeLeftover(before[0].audioFileName);
    QTRY_VERIFY(!meeting().isTranscribing());
    QCOMPARE(meeting().leftovers().size(), 2);
    QCOMPARE(meeting().leftovers().first().audioFileName, before[1].audioFileName);
}

void TestMeetingTranscriber::dismissing()
{
    record(1);
    const TaskResult finished(meeting().finishForQuit());
    QTRY_VERIFY(finished.succeeded());
    restart();
    const QString name = m_home->audio().value(0);
    meeting().dismissLeftover(name);
    QCOMPARE(meeting().leftoverNotice(), QString());
    restart();
    QVERIFY(meeting().leftovers().isEmpty());
    QCOMPARE(m_home->patternIn(name), 16'000);
}

QTEST_GUILESS_MAIN(TestMeetingTranscriber)
#include "tst_meetingtranscriber.moc"

#include "audio/SampleRate.h"
#include "tests/meeting/MeetingHome.h"
#include "tests/support/FakeEngineHome.h"
#include "tests/support/FullDisk.h"
#include "tests/support/Rows.h"
#include "tests/support/TaskResult.h"

#include <QFileInfo>

#include <atomic>
#include <new>
#include <thread>

using namespace Qt::StringLiterals;
using namespace orvane;
using namespace orvane::test;

using Outcome = MeetingState::Outcome;

namespace {

const QString inference = u"/inference"_s;
const QString recording = u"Идёт запись…"_s;
const QString preparing = u"Подготовка записи…"_s;
const QString saved = u"Совещание сохранено · 3 сегментов · аудио в истории"_s;
const QString wait = u"Дождитесь завершения текущей операции — движок выполняет их по одной"_s;
/// Three segments, when noise and repeats are left out.
const QByteArray speech =
    R"({"segments":[{"start":0,"end":1,"text":" one"},{"start":1,"end":1.5,"text":" [noise] "},
        {"start":1.5,"end":2,"text":" two"},{"start":2,"end":2.5,"text":" two"},
        {"start":2.5,"end":3,"text":" two"},{"start":3,"end":3.5,"text":" two"}]})";

/// Larger arrays get no memory.
std::atomic<size_t> refusedFrom = SIZE_MAX;

FakeEngineBehaviour answering(const FakeAnswer &answer)
{
    return {.answers = {{inference, {answer}}}};
}

} // namespace

// The thread sanitizer has these functions to itself.
#if defined(__has_feature) && __has_feature(thread_sanitizer)
constexpr bool canRefuse = false;
#else
constexpr bool canRefuse = true;

void *operator new[](size_t size)
{
    if (size >= refusedFrom)
        throw std::bad_alloc();
    return ::operator new(size);
}

void *operator new[](size_t size, const std::nothrow_t &none) noexcept
{
    return size >= refusedFrom ? nullptr : ::operator new(size, none);
}

void operator delete[](void *memory) noexcept
{
    ::operator delete(memory);
}

void operator delete[](void *memory, size_t /*size*/) noexcept
{
    ::operator delete(memory);
}
#endif

class TestMeetingTranscriber : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_folder = std::make_unique<QTemporaryDir>();
        m_engine = std::make_unique<FakeEngineHome>(u"whisper-server"_s);
        m_engine->behave(answering({.body = speech}));
        restart();
    }

    void cleanup()
    {
        m_home = nullptr;
        QTRY_VERIFY(m_engine->allEnded());
        QCoreApplication::processEvents(); // what waited for that goes on
    }

    void recordsAndSaves()
    {
        m_home->installModel(u"small"_s);
        m_home->settings.setSelectedModelID(u"small"_s);
        m_home->settings.setLanguageCode(u"en"_s);
        const QDateTime before = QDateTime::currentDateTime();
        record(2.25);
        m_home->settings.setSelectedModelID(u"base"_s); // for the next one
        m_home->settings.setLanguageCode(u"de"_s);
        QTRY_VERIFY(meeting().elapsed() >= 0.5);
        QCOMPARE(m_home->markers().size(), 1);
        const QString name = m_home->audio().value(0);
        constexpr auto ownerOnly = QFile::ReadOwner | QFile::WriteOwner | QFile::ReadUser | QFile::WriteUser;
        for (const QFileInfo &file : m_home->recordings().entryInfoList(QDir::Files))
            QCOMPARE(file.permissions(), ownerOnly);
        QCOMPARE(QFileInfo(m_home->recordings().path()).permissions(),
                 ownerOnly | QFile::ExeOwner | QFile::ExeUser);

        meeting().stop();
        QVERIFY(!meeting().startRefusal().isEmpty());
        QTRY_COMPARE(meeting().outcome(), Outcome::Saved);
        QCOMPARE(meeting().errorText(), QString());
        QCOMPARE(m_statuses, (QStringList{recording, preparing, u"Расшифровка записи (0:00)…"_s, saved}));
        QCOMPARE(m_home->heardIn(name), 36'000);

        QCOMPARE(m_home->history.records().size(), 1);
        const TranscriptRecord record = m_home->newestRecord();
        QCOMPARE(record.id, meeting().lastRecordID());
        QVERIFY2(record.title.startsWith(u"Совещание · "_s), qPrintable(record.title));
        QVERIFY(record.createdAt >= before.addSecs(-1) && record.createdAt <= QDateTime::currentDateTime());
        QCOMPARE(record.modelID, u"small"_s);
        QCOMPARE(record.languageCode, u"en"_s);
        QVERIFY(m_engine->launches().first().arguments.contains(m_home->models.localPath(u"small"_s)));
        QCOMPARE(record.durationMs, record.segments.last().end);
        QCOMPARE(record.text, u"one two two"_s);
        QCOMPARE(record.audioFileName, name);
        QTRY_COMPARE(m_home->markers(), QStringList());

        meeting().reset();
        QCOMPARE(meeting().statusText() + meeting().transcript(), QString());
        QVERIFY(QFile::remove(m_home->models.localPath(u"base"_s)));
        QVERIFY(QFile::remove(m_home->models.localPath(u"small"_s)));
        m_home->models.refresh();
        QCOMPARE(meeting().startRefusal(), u"Модель распознавания недоступна."_s);
    }

    void withoutSpeech_data()
    {
        const Rows<double, FakeAnswer> row("seconds", "answer");
        row("noise", 1.0, FakeAnswer{.body = R"({"segments":[{"text":" [BLANK_AUDIO]"}]})"});
        row("stopped at once", 0.0, FakeAnswer{.status = 400}); // as to a file without a sample
    }

    void withoutSpeech()
    {
        QFETCH(const double, seconds);
        QFETCH(const FakeAnswer, answer);
        m_engine->behave(answering(answer));
        recordAndStop(seconds);
        QTRY_COMPARE(meeting().outcome(), Outcome::NoSpeech);
        QCOMPARE(meeting().statusText(), u"Готово · речь не распознана (запись сохранена)"_s);
        QCOMPARE(meeting().errorText(), QString());
        QVERIFY(m_home->history.records().isEmpty());
        QTRY_COMPARE(m_home->markers(), QStringList());
        QCOMPARE(m_home->heardIn(m_home->audio().value(0)), qint64(seconds * sampleRate));
    }

    void doesNotStart()
    {
        m_home->microphone->startError = u"broken"_s;
        for (const bool isAllowed : {false, true}) {
            m_home->microphoneAccess->isAllowed = isAllowed;
            const TaskResult started(meeting().start());
            QVERIFY(!meeting().canStart()); // while it starts
            QTRY_VERIFY(started.succeeded());
            QVERIFY2(meeting().errorText().startsWith(isAllowed ? u"Не удалось начать запись: broken"_s
                                                                : u"Нет доступа к микрофону."_s),
                     qPrintable(meeting().errorText()));
            QCOMPARE(meeting().outcome(), Outcome::NotStarted);
            QCOMPARE(m_home->recordings().entryList(QDir::Files), QStringList());
        }
        m_home->microphone->startError.clear();
        record(1);
    }

    /// The audio stays, is offered behind the others, and transcribed when the reason is gone.
    void failures()
    {
        m_engine->behave(answering({.status = 500}));
        bool wasOfferedTooEarly = false;
        connect(&meeting(), &MeetingTranscriber::leftoversChanged, this,
                [&] { wasOfferedTooEarly |= meeting().isTranscribing(); });
        const auto error = [](bool hasModel) {
            return hasModel ? u"Ошибка распознавания: HTTP 500"_s : u"Модель распознавания недоступна."_s;
        };
        QStringList names;
        for (const bool hasModel : {true, false}) {
            record(1);
            QVERIFY(hasModel || QFile::remove(m_home->models.localPath(u"base"_s)));
            meeting().stop();
            QTRY_COMPARE(meeting().outcome(), Outcome::Failed);
            m_home->installModel(u"base"_s);
            names.append(meeting().leftovers().last().audioFileName);
            QCOMPARE(meeting().errorText(), error(hasModel));
            QCOMPARE(meeting().statusText(),
                     u"Ошибка расшифровки (запись сохранена: %1)"_s.arg(names.last()));
            QCOMPARE(m_home->heardIn(names.last()), sampleRate);
        }
        QVERIFY(!wasOfferedTooEarly);
        QCOMPARE(m_home->markers().size(), 2);

        meeting().transcribeLeftover(names.first());
        QTRY_VERIFY(!meeting().isTranscribing());
        QCOMPARE(meeting().leftovers().first().audioFileName, names.last());
        m_engine->behave(answering({.body = speech}));
        meeting().transcribeLeftover(names.last());
        QTRY_COMPARE(meeting().outcome(), Outcome::Saved);
        QCOMPARE(meeting().errorText(), QString());
        QTRY_VERIFY(meeting().leftovers().size() == 1 && m_home->markers().size() == 1);
    }

    void cancelling_data()
    {
        const Rows<int> row("requests");
        row("completing the file", 0);
        row("recognising", 1);
    }

    void cancelling()
    {
        QFETCH(const int, requests);
        m_engine->behave(answering(FakeAnswer::never()));
        m_home->microphone->stopMs = requests == 0 ? 300 : 0;
        record(1.5);
        const QString name = m_home->audio().value(0);
        meeting().cancelTranscription(); // not while it records
        QVERIFY(meeting().isRunning());
        meeting().stop();
        QTRY_COMPARE(m_engine->requests(inference).size(), requests);
        meeting().cancelTranscription();
        QVERIFY(!meeting().isTranscribing());
        QCOMPARE(meeting().statusText(), u"Расшифровка отменена · аудиозапись сохранена"_s);

        // At once the next one, which nothing of the first disturbs.
        m_engine->behave(answering({.body = speech}));
        m_home->microphone->stopMs = 0;
        record(1);
        QTRY_COMPARE(m_home->heardIn(name), 24'000);
        QTRY_COMPARE(m_home->markers().size(), 1);
        QVERIFY(!m_home->markers().first().startsWith(name));
        QVERIFY(meeting().isRunning());
        meeting().stop();
        QTRY_COMPARE(meeting().statusText(), saved);
        QCOMPARE(m_home->history.records().size(), 1);
        QVERIFY(m_home->newestRecord().audioFileName != name);
        QVERIFY(meeting().leftovers().isEmpty());
        QTRY_COMPARE(m_engine->abandoned(inference), requests); // the engine was freed
    }

    void waitsForItsTurn()
    {
        EngineTurns::Turn turn = m_home->turns.take();
        recordAndStop(1);
        QTRY_COMPARE(meeting().statusText(), wait);
        meeting().cancelTranscription();
        recordAndStop(1);
        QTRY_COMPARE(meeting().statusText(), wait);
        QCOMPARE(m_engine->launches().size(), 0);
        turn.reset();
        QTRY_COMPARE(meeting().statusText(), saved);
        QVERIFY(!m_home->turns.isTaken());
    }

    void fullDisk()
    {
        record(1);
        const QString name = m_home->audio().value(0);
        const auto size = [&] { return QFileInfo(m_home->recordings().filePath(name)).size(); };
        QTRY_COMPARE(size(), 44 + 32'000);
        FakeEngineBehaviour behaviour = answering({.body = speech});
        behaviour.keepsBodies = false; // for the engine the disk may be full too
        m_engine->behave(behaviour);
        {
            const auto full = limitFileSize(44 + 32'000 + 20'000);
            hear(3);
            QTRY_COMPARE(size(), 44 + 32'000 + 20'000);
            QVERIFY(meeting().isRunning());
            meeting().stop();
            QTRY_VERIFY(m_home->heardIn(name) >= sampleRate);
        }
        QTRY_COMPARE(meeting().outcome(), Outcome::Partial);
        QCOMPARE(meeting().statusText(), saved);
        QCOMPARE(meeting().errorText(),
                 u"Запись сохранена частично — возможно, на диске не хватило места."_s);
    }

    void recorderEndsByItself_data()
    {
        const Rows<int, Outcome, QString> row("status", "outcome", "error");
        row("recognised", 200, Outcome::Partial, u"No sound any more."_s);
        row("not recognised", 500, Outcome::Failed, u"No sound any more. Ошибка распознавания: HTTP 500"_s);
    }

    void recorderEndsByItself()
    {
        QFETCH(const int, status);
        QFETCH(const Outcome, outcome);
        m_engine->behave(answering({.status = status, .body = speech}));
        record(1.5);
        m_home->microphone->current->endByItself(u"No sound any more."_s);
        QVERIFY(meeting().isTranscribing());
        QTRY_COMPARE(meeting().outcome(), outcome);
        QTEST(meeting().errorText(), "error");
        QCOMPARE(m_home->heardIn(m_home->audio().value(0)), 24'000);
    }

    void memoryEnds()
    {
        if (!canRefuse)
            QSKIP("memory cannot be refused under the thread sanitizer");
        record(1);
        const QString name = m_home->audio().value(0);
        QTRY_COMPARE(QFileInfo(m_home->recordings().filePath(name)).size(), 44 + 32'000);
        refusedFrom = 32'000;
        hear(1);
        QTRY_VERIFY(!meeting().isRunning());
        refusedFrom = SIZE_MAX;
        QTRY_COMPARE(meeting().outcome(), Outcome::Partial);
        QCOMPARE(meeting().errorText(), u"Не хватило памяти."_s);
        QCOMPARE(m_home->heardIn(name), sampleRate);
    }

    /// The program ends without a word.
    void destroyed()
    {
        record(1.5);
        restart();
        QCOMPARE(meeting().leftovers().size(), 1);
        QCOMPARE(meeting().leftovers().first().durationMs, 1500);
    }

    void warnsWhileRecording()
    {
        *m_home->freeSpace = 60 * 32'000 - 1;
        record(1);
        QCOMPARE(meeting().statusText(), recording + u" · на диске нет места"_s);
        meeting().stop();
        QTRY_COMPARE(meeting().outcome(), Outcome::Saved);
        *m_home->freeSpace = 14LL * 60 * 32'000 + 31'999;
        record(1);
        QCOMPARE(meeting().statusText(), recording + u" · на диске осталось места на 14 мин"_s);
        *m_home->freeSpace = 15LL * 60 * 32'000;
        m_home->microphone->current->setSilent(true);
        QTRY_COMPARE_WITH_TIMEOUT(meeting().statusText(), recording + u" · микрофон молчит"_s, 20'000);
        m_home->microphone->current->setSilent(false);
        QCOMPARE(meeting().statusText(), recording);
    }

    void quitting_data()
    {
        const Rows<bool> row("isRecognising");
        row("recording", false);
        row("recognising", true);
    }

    /// The next start offers the recording; it becomes a record like any other.
    void quitting()
    {
        QFETCH(const bool, isRecognising);
        m_engine->behave(answering(FakeAnswer::never()));
        m_home->microphone->stopMs = 100;
        const QDateTime before = QDateTime::currentDateTime();
        record(61.25);
        const QDateTime after = QDateTime::currentDateTime();
        if (isRecognising) {
            meeting().stop();
            QTRY_COMPARE(m_engine->requests(inference).size(), 1);
        }
        QVERIFY(finished(meeting().finishForQuit()).succeeded());
        const QString name = m_home->audio().value(0);
        QCOMPARE(m_home->heardIn(name), 980'000);
        QVERIFY(!meeting().canStart());

        restart();
        QCOMPARE(meeting().leftovers().size(), 1);
        QCOMPARE(meeting().leftovers().first().audioFileName, name);
        QCOMPARE(meeting().leftovers().first().durationMs, 61'250);
        QVERIFY2(meeting().leftoverNotice().contains(u"1:01"_s), qPrintable(meeting().leftoverNotice()));
        {
            const EngineTurns::Turn turn = m_home->turns.take();
            meeting().transcribeLeftover(name);
            QCOMPARE(meeting().errorText(), wait);
        }
        meeting().transcribeLeftover(name);
        QVERIFY(meeting().isTranscribing());
        meeting().cancelTranscription();
        QCOMPARE(meeting().outcome(), Outcome::Cancelled);
        QCOMPARE(meeting().leftovers().size(), 1); // both times it stays offered
        QTRY_COMPARE(meeting().leftoverRefusal(), QString());

        m_engine->behave(answering({.body = speech}));
        meeting().transcribeLeftover(name);
        QTRY_COMPARE(meeting().statusText(), saved);
        QVERIFY(m_statuses.contains(u"Расшифровка записи (1:01)…"_s));
        const TranscriptRecord record = m_home->newestRecord();
        QVERIFY(record.createdAt >= before.addSecs(-1) && record.createdAt <= after);
        QCOMPARE(record.audioFileName, name);

        QTRY_COMPARE(m_home->markers(), QStringList());
        restart();
        QVERIFY(meeting().leftovers().isEmpty());
        QCoro::waitFor(m_home->history.whenLoaded());
        QCOMPARE(m_home->history.records().size(), 1);
    }

    void quittingWhileTheMicrophoneIsAskedFor()
    {
        m_home->microphoneAccess->takes = std::chrono::minutes(1);
        const TaskResult started(meeting().start());
        QVERIFY(finished(meeting().finishForQuit()).succeeded());
        QVERIFY(started.isDone());
        QCOMPARE(meeting().errorText(), QString());
    }

    void recordNotSaved()
    {
        const QString history = m_folder->filePath(u"Orvane/History"_s);
        QVERIFY(QDir(history).removeRecursively());
        put(history, {}); // in the way
        record(1);
        m_home->microphone->current->endByItself(u"No sound any more."_s);
        QTRY_COMPARE(meeting().outcome(), Outcome::Failed);
        QVERIFY2(meeting().errorText().startsWith(u"No sound any more. Не удалось сохранить запись: "_s),
                 qPrintable(meeting().errorText()));
        QCOMPARE(meeting().leftovers().size(), 1);
        QCOMPARE(m_home->history.records().size(), 1); // until the program ends

        // What became of that record is nothing to the next meeting.
        QVERIFY(QFile::remove(history));
        QVERIFY(QDir().mkpath(history));
        recordAndStop(1);
        QTRY_COMPARE(meeting().outcome(), Outcome::Saved);
        QCOMPARE(meeting().errorText(), QString());
        QTRY_COMPARE(m_home->markers(), QStringList()); // its record could be written too
        QVERIFY(meeting().leftovers().isEmpty());
    }

private:
    /// The program ends and starts again.
    void restart()
    {
        m_home = nullptr;
        m_home = std::make_unique<MeetingHome>(m_folder->path(), m_engine->resources());
        m_statuses.clear();
        connect(&meeting(), &MeetingTranscriber::statusTextChanged, this,
                [this] { m_statuses.append(meeting().statusText()); });
        QVERIFY(finished(meeting().findLeftovers()).succeeded());
    }

    [[nodiscard]] MeetingTranscriber &meeting() { return m_home->meeting; }
    /// On another thread, as by the real microphone.
    void hear(double seconds)
    {
        std::jthread([&] { m_home->microphone->current->hear(seconds); }).join();
    }
    void record(double seconds)
    {
        QVERIFY(finished(meeting().start()).succeeded());
        QCOMPARE(meeting().errorText(), QString());
        QVERIFY(meeting().isRunning());
        hear(seconds);
    }
    void recordAndStop(double seconds)
    {
        record(seconds);
        meeting().stop();
        QVERIFY(meeting().isTranscribing());
    }

    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<FakeEngineHome> m_engine;
    std::unique_ptr<MeetingHome> m_home;
    QStringList m_statuses;
};

QTEST_GUILESS_MAIN(TestMeetingTranscriber)
#include "tst_meetingtranscriber.moc"

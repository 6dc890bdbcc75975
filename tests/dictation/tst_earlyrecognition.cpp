#include "dictation/Battery.h"
#include "dictation/EarlyRecognition.h"
#include "engine/EngineProcessRegistry.h"
#include "engine/EngineTurns.h"
#include "recognition/WhisperServerEngine.h"
#include "tests/support/FakeEngineHome.h"
#include "tests/support/Rows.h"
#include "tests/support/TaskResult.h"

#include <QCoreApplication>

#include <random>

using namespace Qt::StringLiterals;
using namespace orvane;
using namespace orvane::test;
using Ending = FakeAnswer::Ending;

namespace {

const QString inference = u"/inference"_s;
constexpr size_t delivery = 1365; // samples that come at a time

FakeAnswer saying(const char *text, int delayMs = 0)
{
    return {.body = QByteArray(R"({"language":"english","segments":[{"start":0,"end":1,"text":")") + text +
                    R"("}]})",
            .delayMs = delayMs};
}

class FakeBattery : public Battery
{
public:
    [[nodiscard]] bool isLow() const override { return low; }

    bool low = false;
};

} // namespace

/// Dictations that are heard in a moment, by an engine that answers as it is told.
class TestEarlyRecognition : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_home = std::make_unique<FakeEngineHome>(u"whisper-server"_s);
        m_registry = std::make_unique<EngineProcessRegistry>(m_home->resources() + u"/pids.txt"_s);
        m_engine = std::make_unique<WhisperServerEngine>(
            EngineServer::SearchPath{.resources = m_home->resources(), .folders = {}}, *m_registry,
            m_home->resources());
        answer({saying(" one")});
        QVERIFY(finished(m_engine->load(u"a"_s)).succeeded());
        m_recorded.clear();
        m_delivered = m_read = 0;
        m_hasEnded = false;
        m_begun = m_answered = 0;
        m_model = u"a"_s;
        m_battery.low = false;
        m_turn = nullptr;
        m_recognition = std::make_unique<EarlyRecognition>(EarlyRecognition::Collaborators{
            .engine = *m_engine,
            .turns = m_turns,
            .battery = m_battery,
            .modelFile = [this] { return m_model; },
            .samplesAfter = [this](size_t first, size_t count) { return samplesAfter(first, count); }});
        connect(m_recognition.get(), &EarlyRecognition::liveTextChanged, this, [this] { ++m_answered; });
        pause(0.5);
    }

    void cleanup()
    {
        m_recognition.reset();
        m_engine.reset();
        QTRY_VERIFY(m_home->allEnded());
        QCoreApplication::processEvents(); // what waited for that goes on
    }

    /// Whoever is silent before the stop has their text at once.
    void nothingIsLeftAfterAPause_data()
    {
        const Rows<int> row("delay");
        row("snapshot has been answered", 0);
        row("snapshot runs", 300);
    }

    void nothingIsLeftAfterAPause()
    {
        QFETCH(const int, delay);
        answer({saying(" one", delay), saying(" two")});
        speak(4);
        pause(0.5);
        if (delay == 0)
            QTRY_COMPARE(m_recognition->liveText(), (LiveText{.settled = {}, .unsettled = u"one"_s}));
        pause(0.3);
        QCOMPARE(textAtEnd(), u"one"_s);
        QCOMPARE(requests().size(), 1);
    }

    void restIsRecognisedInTheLanguageFound()
    {
        answer({saying(" one"), saying(" one two.\n")});
        speak(4);
        pause(0.5);
        QTRY_COMPARE(m_recognition->liveText().unsettled, u"one"_s);
        speak(2);
        QCOMPARE(textAtEnd(), u"one two."_s);
        QCOMPARE(languages(), (QList<QByteArray>{"auto", "english"}));
        QCOMPARE(lengths(), (QList<int>{5, 7}));
    }

    void languageOfAWordIsNotBelieved()
    {
        answer({saying(" one"), saying(" one two")});
        speak(1.5);
        pause(1);
        QTRY_COMPARE(m_answered, 1);
        speak(2);
        QCOMPARE(textAtEnd(), u"one two"_s);
        QCOMPARE(languages(), (QList<QByteArray>{"auto", "auto"}));
    }

    void farSpeechIsSettled()
    {
        answer({saying(" one"), saying(" one two..."), saying(" three.")});
        speak(6);
        pause(0.5);
        QTRY_COMPARE(m_recognition->liveText().unsettled, u"one"_s);
        speak(12);
        pause(1.2);
        QTRY_COMPARE(m_recognition->liveText().unsettled, u"one two..."_s);
        speak(22.2);
        QCOMPARE(textAtEnd(), u"one two three."_s);
        QCOMPARE(lengths(), (QList<int>{7, 19, 23}));
        QCOMPARE(m_recognition->liveText(), (LiveText{.settled = u"one two"_s, .unsettled = u"three."_s}));
    }

    /// However long it gets, no request is longer than what the model takes in at once, and there are few.
    void requestsStayShortAndFew()
    {
        for (int i = 0; i < 26; ++i) {
            const int answered = m_answered;
            speak(4);
            pause(0.6);
            if (m_begun > answered)
                QTRY_COMPARE(m_answered, m_begun);
        }
        (void)textAtEnd();
        for (const int length : lengths())
            QVERIFY2(length <= 30, qPrintable(QString::number(length)));
        QVERIFY2(m_begun >= 5 && m_begun <= 8, qPrintable(QString::number(m_begun)));
    }

    void noSnapshot_data()
    {
        const Rows<std::function<void(TestEarlyRecognition *)>> row("circumstance");
        row("a meeting holds the engine", [](auto *test) { test->m_turn = test->m_turns.take(); });
        row("a meeting begins during a snapshot", [](auto *test) {
            test->speak(4);
            test->pause(0.5);
            test->m_turn = test->m_turns.take();
            QTRY_COMPARE(test->m_answered, 1);
            test->speak(9);
        });
        row("the battery is low", [](auto *test) { test->m_battery.low = true; });
        row("little has been said", [](auto *test) {
            test->speak(4);
            test->pause(0.5);
            QTRY_COMPARE(test->m_answered, 1);
            test->speak(2);
        });
        row("the engine is slow", [](auto *test) {
            test->speak(4);
            test->pause(0.5);
            test->speak(9); // while it works
            QTRY_COMPARE(test->m_answered, 1);
        });
    }

    void noSnapshot()
    {
        QFETCH(const std::function<void(TestEarlyRecognition *)>, circumstance);
        circumstance(this);
        const int begun = m_begun;
        speak(begun > 0 ? 0.5 : 4);
        pause(1.5);
        QCOMPARE(m_begun, begun);
        QCOMPARE(textAtEnd(), u"one"_s); // all the same
        QCOMPARE(requests().size(), begun + 1);
    }

    void engineDiesInASnapshot()
    {
        answer({{.ending = Ending::EngineDies}});
        speak(4);
        pause(0.5);
        QTRY_VERIFY(!m_engine->isRunning());
        answer({saying(" one")});
        speak(2);
        QCOMPARE(textAtEnd(), u"one"_s);
        QCOMPARE(languages(), (QList<QByteArray>{"auto", "auto"}));
    }

    void anotherModelIsChosen()
    {
        speak(4);
        pause(0.5);
        QTRY_COMPARE(m_answered, 1);
        answer({saying(" all")});
        m_model = u"b"_s;
        pause(0.5);
        QCOMPARE(textAtEnd(), u"all"_s);
        QCOMPARE(languages(), (QList<QByteArray>{"auto", "auto"}));
        QCOMPARE(m_home->launches().constLast().arguments.value(1), u"b"_s);
    }

    void failureIsReportedAtTheEnd_data()
    {
        const Rows<bool> row("isModelThere");
        row("the engine fails", true);
        row("no model", false);
    }

    void failureIsReportedAtTheEnd()
    {
        QFETCH(const bool, isModelThere);
        answer({{.status = 500}});
        if (!isModelThere)
            m_model.clear();
        speak(4);
        pause(0.5);
        const auto text = finished(m_recognition->textOf(m_recorded, {}));
        QVERIFY2(text.error().contains(isModelThere ? u"HTTP 500"_s : u"скачайте модель"_s),
                 qPrintable(text.error()));
    }

    void abandoned_data()
    {
        const Rows<bool> row("hasEnded");
        row("while it is spoken", false);
        row("at its end", true);
    }

    void abandoned()
    {
        QFETCH(const bool, hasEnded);
        answer({FakeAnswer::never()});
        speak(4);
        pause(0.5);
        QTRY_COMPARE(requests().size(), 1);
        std::stop_source stop;
        std::optional<TaskResult<QString>> text;
        if (hasEnded)
            text.emplace(m_recognition->textOf(m_recorded, stop.get_token()));
        stop.request_stop();
        m_recognition.reset();
        if (text)
            QTRY_VERIFY(text->isCancelled());
        QTest::qWait(200);
        QCOMPARE(m_home->abandoned(inference), 0); // the engine would finish its pass in any case
    }

    /// What delayed a snapshot is over, but there is nothing to read any more.
    void recordingEndsBeforeASnapshot()
    {
        answer({saying(" one")});
        m_turn = m_turns.take();
        speak(4);
        pause(0.5);
        m_turn = {};
        m_hasEnded = true;
        m_recognition->hear();
        QCOMPARE(textAtEnd(), u"one"_s);
        QCOMPARE(lengths(), (QList<int>{5}));
    }

private:
    void answer(const QList<FakeAnswer> &answers) const
    {
        m_home->behave({.answers = {{u"/"_s, {{}}}, {inference, answers}}});
    }

    /// Noise in syllables.
    void speak(double seconds)
    {
        for (size_t i = 0; i < size_t(seconds * sampleRate); ++i) {
            const bool isGap = i % (sampleRate / 2) < sampleRate / 8;
            m_recorded.push_back((m_random() % 2 == 0 ? 1.0F : -1.0F) * (isGap ? 0.001F : 0.2F));
        }
        hear();
    }

    void pause(double seconds)
    {
        m_recorded.resize(m_recorded.size() + size_t(seconds * sampleRate), 0.0001F);
        hear();
    }

    void hear()
    {
        while (m_delivered < m_recorded.size()) {
            m_delivered = std::min(m_delivered + delivery, m_recorded.size());
            m_recognition->hear();
        }
    }

    /// A snapshot reads more than what has just come.
    std::vector<float> samplesAfter(size_t first, size_t count)
    {
        if (m_hasEnded)
            return {};
        if (first != m_read)
            ++m_begun;
        m_read = std::max(m_read, m_delivered);
        const size_t end = first + std::min(count, m_delivered - first);
        return {m_recorded.begin() + std::ptrdiff_t(first), m_recorded.begin() + std::ptrdiff_t(end)};
    }

    QString textAtEnd()
    {
        const auto text = finished(m_recognition->textOf(m_recorded, {}));
        return text.succeeded() ? text.value() : text.error();
    }

    [[nodiscard]] QList<FakeEngineHome::Request> requests() const { return m_home->requests(inference); }

    /// Of the recordings sent, in whole seconds.
    [[nodiscard]] QList<int> lengths() const
    {
        QList<int> lengths;
        for (const FakeEngineHome::Request &request : requests())
            lengths.append(qRound(double(request.bodySize) / 2 / sampleRate));
        return lengths;
    }

    [[nodiscard]] QList<QByteArray> languages() const
    {
        const QByteArray field = "name=\"language\"\r\n\r\n";
        QList<QByteArray> languages;
        for (const FakeEngineHome::Request &request : requests()) {
            const QByteArray body = request.body();
            languages.append(body.mid(body.indexOf(field) + field.size()).split('\r').constFirst());
        }
        return languages;
    }

    std::unique_ptr<FakeEngineHome> m_home;
    std::unique_ptr<EngineProcessRegistry> m_registry;
    std::unique_ptr<WhisperServerEngine> m_engine;
    EngineTurns m_turns;
    EngineTurns::Turn m_turn;
    FakeBattery m_battery;
    QString m_model;
    std::minstd_rand m_random;
    std::vector<float> m_recorded;
    size_t m_delivered = 0; // of them
    bool m_hasEnded = false;
    size_t m_read = 0;
    int m_begun = 0; // snapshots
    int m_answered = 0;
    std::unique_ptr<EarlyRecognition> m_recognition;
};

QTEST_GUILESS_MAIN(TestEarlyRecognition)
#include "tst_earlyrecognition.moc"

#include "base/Async.h"
#include "engine/EngineTurns.h"
#include "tests/support/TaskResult.h"

#include <QTest>

using namespace orvane;

class TestEngineTurns : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void oneAtATime()
    {
        const EngineTurns turns;
        EngineTurns::Turn turn = turns.take();
        QVERIFY(turn && turns.isTaken());
        QVERIFY(!turns.take());
        turn.reset();
        QVERIFY(!turns.isTaken());
        QVERIFY(turns.take());
    }

    void eachWhoWaitsGetsIt()
    {
        const EngineTurns turns;
        int users = 0;
        // Holds its turn over a turn of the event loop.
        static const auto use = [](const EngineTurns *of, int *count) -> QCoro::Task<int> {
            EngineTurns::Turn turn = co_await of->wait({});
            const int others = (*count)++;
            co_await sleepFor(std::chrono::milliseconds(5));
            --*count;
            co_return others;
        };
        EngineTurns::Turn turn = turns.take();
        std::vector<TaskResult<int>> waiting;
        for (int i = 0; i < 3; ++i)
            waiting.emplace_back(use(&turns, &users));
        QVERIFY(!waiting.front().isDone());
        turn.reset();
        for (const TaskResult<int> &one : waiting) {
            QTRY_VERIFY(one.succeeded());
            QCOMPARE(one.value(), 0);
        }
        QVERIFY(!turns.isTaken());
    }

    void stoppedWhileItComes()
    {
        const EngineTurns turns;
        EngineTurns::Turn turn = turns.take();
        std::stop_source stop;
        const TaskResult waiting(turns.wait(stop.get_token()));
        turn.reset(); // two reasons to wake it before it has run
        stop.request_stop();
        QTRY_VERIFY(waiting.isCancelled());
        QVERIFY(!turns.isTaken());
    }
};

QTEST_GUILESS_MAIN(TestEngineTurns)
#include "tst_engineturns.moc"

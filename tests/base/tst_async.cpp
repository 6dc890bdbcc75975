#include "base/AnyStop.h"
#include "base/Async.h"
#include "base/OneTimeEvent.h"
#include "base/Operation.h"
#include "base/Scope.h"
#include "tests/support/Rows.h"

#include <QSignalSpy>

#include <new>
#include <stdexcept>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using namespace orvane;
using namespace orvane::test;

namespace {

/// How a coroutine ended.
enum class End { NotYet, Result, Gone, Cancelled, Error };

QCoro::Task<> note(QCoro::Task<> task, End *end)
{
    try {
        co_await std::move(task);
        *end = End::Result;
    } catch (const Gone &) {
        *end = End::Gone;
    } catch (const Cancelled &) {
        *end = End::Cancelled;
    } catch (const std::exception &) {
        *end = End::Error;
    }
}

QCoro::Task<> waitAndCount(std::shared_ptr<OneTimeEvent> event, std::chrono::milliseconds limit,
                           std::stop_token stop, int *wakes)
{
    try {
        co_await event->waitFor(limit, stop);
    } catch (const Cancelled &) {
        // a wake too
    }
    ++*wakes;
}

QCoro::Task<> until(std::shared_ptr<OneTimeEvent> event)
{
    co_await event->wait();
}

QCoro::Task<> failAfter(std::shared_ptr<OneTimeEvent> event)
{
    co_await event->wait();
    throw Error(u"failed"_s);
}

QCoro::Task<int> answerAfter(std::shared_ptr<OneTimeEvent> event, Progress progress)
{
    progress.setStatus(u"working"_s);
    progress.report(0.5, 3s);
    co_await event->wait();
    progress.setStatus(u"late"_s);
    co_return 42;
}

template <typename Failure>
QCoro::Task<int> failWith(Failure failure)
{
    co_await sleepFor(0ms);
    throw failure;
}

QCoro::Task<> runInto(Operation *operation, Operation::Work<int> work, std::optional<int> *result,
                      bool *ended)
{
    try {
        *result = co_await operation->run<int>(std::move(work));
    } catch (const Error &) {
        // published
    }
    *ended = true;
}

} // namespace

class TestAsync : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void anEventWakesEachWaiterOnce()
    {
        const auto event = OneTimeEvent::create();
        std::stop_source stop;
        int wakes = 0;
        spawn(waitAndCount(event, 0ms, stop.get_token(), &wakes));
        spawn(waitAndCount(event, 1h, stop.get_token(), &wakes));
        // The time limit, the event twice and the stop, all before anybody is resumed.
        QTest::qSleep(5);
        event->happen();
        event->happen();
        stop.request_stop();
        QCOMPARE(wakes, 0);
        QTRY_COMPARE(wakes, 2);
        QTest::qWait(20);
        QCOMPARE(wakes, 2);
    }

    void waitingCanBeLimitedAndStopped()
    {
        const auto event = OneTimeEvent::create();
        std::stop_source stop;
        int limited = 0;
        End stopped = End::NotYet;
        spawn(waitAndCount(event, 1ms, {}, &limited));
        spawn(note(event->wait(stop.get_token()), &stopped));
        QTRY_COMPARE(limited, 1);
        QCOMPARE(stopped, End::NotYet);
        stop.request_stop();
        QTRY_COMPARE(stopped, End::Cancelled);
        QVERIFY(!event->hasHappened());
    }

    void aPastEventIsNotWaitedFor()
    {
        const auto event = OneTimeEvent::create();
        event->happen();
        End end = End::NotYet;
        spawn(note(event->wait(), &end));
        QCOMPARE(end, End::Result);
    }

    void sleepEndsWithItsStop()
    {
        std::stop_source stop;
        End end = End::NotYet;
        spawn(note(sleepFor(1h, stop.get_token()), &end));
        stop.request_stop();
        QTRY_COMPARE(end, End::Cancelled);
    }

    void anyOfSeveralStops()
    {
        for (const size_t which : {0u, 1u, 2u}) {
            std::array<std::stop_source, 3> sources;
            const AnyStop any(sources[0].get_token(), sources[1].get_token(), sources[2].get_token());
            QVERIFY(!any.token().stop_requested());
            sources.at(which).request_stop();
            QVERIFY(any.token().stop_requested());
        }
    }

    void scopeTellsWhatBecameOfItsObject()
    {
        const auto event = OneTimeEvent::create();
        Scope staying;
        auto other = std::make_unique<Scope>();
        auto going = std::make_unique<Scope>();
        std::stop_source stop;
        std::array<End, 5> ends{};
        spawn(note(staying(until(event)), ends.data()));
        spawn(note(staying(failAfter(event)), &ends[1]));
        spawn(note((*going)(failAfter(event)), &ends[2]));
        spawn(note(staying(until(event), stop.get_token()), &ends[3]));
        spawn(note(staying((*other)(until(event))),
                   &ends[4])); // who depends on another object is not gone itself
        going.reset();
        other.reset();
        stop.request_stop();
        event->happen();
        QTRY_COMPARE(ends, (std::array{End::Result, End::Error, End::Gone, End::Cancelled, End::Cancelled}));
    }

    void longWorkDoesNotDelayShortWork()
    {
        std::atomic<bool> goOn = true;
        const int threads = longWorkPool().maxThreadCount();
        for (int i = 0; i < threads; ++i) {
            startOffMainThread(&longWorkPool(), [&goOn] {
                while (goOn)
                    QThread::msleep(1);
            });
        }
        End end = End::NotYet;
        spawn(note(offMainThread([] {}), &end));
        QTRY_COMPARE(end, End::Result);
        goOn = false;
        waitForDone(longWorkPool());
    }

    void operationPublishesItsRun()
    {
        Operation operation;
        operation.setError(u"of an earlier run"_s);
        const QSignalSpy running(&operation, &Operation::runningChanged);
        const auto event = OneTimeEvent::create();
        std::optional<int> result;
        bool ended = false;
        spawn(runInto(
            &operation, [event](Progress progress, std::stop_token) { return answerAfter(event, progress); },
            &result, &ended));
        QVERIFY(operation.isRunning());
        QCOMPARE(operation.error(), QString());
        QCOMPARE(operation.status(), u"working"_s);
        QCOMPARE(operation.progress(), 0.5);
        QCOMPARE(operation.remainingMs(), 3000);
        event->happen();
        QTRY_VERIFY(ended);
        QCOMPARE(result, 42);
        QVERIFY(!operation.isRunning());
        QCOMPARE(running.size(), 2);
    }

    void operationTellsWhyItFailed_data()
    {
        using Work = Operation::Work<int>;
        const Rows<Work, QString> row("work", "error");
        row("our error", Work([](Progress, std::stop_token) { return failWith(Error(u"so"_s)); }), u"so"_s);
        row("no memory", Work([](Progress, std::stop_token) { return failWith(std::bad_alloc()); }),
            u"Не хватило памяти."_s);
        row("a library's",
            Work([](Progress, std::stop_token) { return failWith(std::runtime_error("strerror")); }),
            u"Внутренняя ошибка программы."_s);
        row("cancelled beneath", Work([](Progress, std::stop_token) { return failWith(Cancelled()); }), {});
    }

    void operationTellsWhyItFailed()
    {
        QFETCH(const Operation::Work<int>, work);
        Operation operation;
        std::optional<int> result;
        bool ended = false;
        spawn(runInto(&operation, work, &result, &ended));
        QTRY_VERIFY(ended);
        QVERIFY(!result);
        QTEST(operation.error(), "error");
        QVERIFY(!operation.isRunning());
    }

    void cancelledOperationIsReadyAtOnce()
    {
        Operation operation;
        const auto first = OneTimeEvent::create();
        const auto second = OneTimeEvent::create();
        std::array<std::optional<int>, 2> results;
        std::array<bool, 2> ended{};
        std::stop_token firstStop;
        spawn(runInto(
            &operation,
            [first, &firstStop](Progress progress, std::stop_token stop) {
                firstStop = std::move(stop);
                return answerAfter(first, progress);
            },
            results.data(), ended.data()));
        operation.cancel();
        QVERIFY(firstStop.stop_requested());
        QVERIFY(!operation.isRunning());
        spawn(runInto(
            &operation,
            [second](Progress progress, std::stop_token) { return answerAfter(second, progress); },
            &results[1], &ended[1]));
        first->happen();
        QTRY_VERIFY(ended[0]);
        QVERIFY(!results[0]);
        QVERIFY(operation.isRunning());
        QCOMPARE(operation.status(), u"working"_s); // not what the first run said after its end
        second->happen();
        QTRY_VERIFY(ended[1]);
        QCOMPARE(results[1], 42);
    }

    void operationMayGoDuringItsRun()
    {
        auto operation = std::make_unique<Operation>();
        const auto event = OneTimeEvent::create();
        std::optional<int> result;
        bool ended = false;
        spawn(runInto(
            operation.get(),
            [event](Progress progress, std::stop_token) { return answerAfter(event, progress); }, &result,
            &ended));
        operation.reset();
        event->happen();
        QTRY_VERIFY(ended);
        QVERIFY(!result);
    }
};

QTEST_GUILESS_MAIN(TestAsync)
#include "tst_async.moc"

#include "dictation/DictationTrigger.h"

#include <QTest>

using namespace orvane;
using namespace std::chrono_literals;

using Key = TriggerKey;

namespace {

struct Step
{
    std::chrono::nanoseconds at;
    Key key;
    bool down = true;
    bool completes = false;
};

} // namespace

class TestDictationTrigger : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void doublePress_data();
    void doublePress();
};

void TestDictationTrigger::doublePress_data()
{
    constexpr Key command = Key::RightCommand;
    constexpr Key option = Key::RightOption;
    QTest::addColumn<Key>("trigger");
    QTest::addColumn<QList<Step>>("steps");

    QTest::newRow("399 ms apart") << command << QList<Step>{{1s, command}, {1s + 399ms, command, true, true}};
    QTest::newRow("400 ms apart: the second is a new first")
        << command << QList<Step>{{1s, command}, {1s + 400ms, command}, {1s + 799ms, command, true, true}};
    QTest::newRow("from the first moment of the clock")
        << option << QList<Step>{{0s, option}, {1ns, option, true, true}};
    QTest::newRow("a third press begins a new pair")
        << command
        << QList<Step>{
               {0ms, command}, {100ms, command, true, true}, {200ms, command}, {300ms, command, true, true}};
    QTest::newRow("releases neither count nor reset")
        << command
        << QList<Step>{
               {0ms, command}, {50ms, command, false}, {100ms, command, true, true}, {150ms, command, false}};
    QTest::newRow("the other key in between")
        << option
        << QList<Step>{{0ms, option}, {50ms, command}, {100ms, option}, {150ms, option, true, true}};
    QTest::newRow("the other key let go in between")
        << option << QList<Step>{{0ms, option}, {50ms, command, false}, {100ms, option}};
    QTest::newRow("the other key twice") << option << QList<Step>{{0ms, command}, {100ms, command}};
}

void TestDictationTrigger::doublePress()
{
    QFETCH(Key, trigger);
    QFETCH(QList<Step>, steps);
    std::chrono::nanoseconds now{};
    DictationTrigger rule([&now] { return now; });
    for (const Step &step : steps) {
        now = step.at;
        QCOMPARE(rule.keyChanged(trigger, step.key, step.down), step.completes);
    }
}

QTEST_APPLESS_MAIN(TestDictationTrigger)
#include "tst_dictationtrigger.moc"

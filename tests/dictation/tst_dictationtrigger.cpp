#include "dictation/DictationTrigger.h"
#include "tests/support/Rows.h"

using namespace orvane;
using namespace orvane::test;
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
    void doublePress_data()
    {
        constexpr Key command = Key::RightCommand;
        constexpr Key option = Key::RightOption;
        const Rows<Key, QList<Step>> row("trigger", "steps");

        row("399 ms apart", command, {{1s, command}, {1s + 399ms, command, true, true}});
        row("400 ms apart: the second is a new first", command,
            {{1s, command}, {1s + 400ms, command}, {1s + 799ms, command, true, true}});
        row("from the first moment of the clock", option, {{0s, option}, {1ns, option, true, true}});
        row("a third press begins a new pair", command,
            {{0ms, command}, {100ms, command, true, true}, {200ms, command}, {300ms, command, true, true}});
        row("releases neither count nor reset", command,
            {{0ms, command}, {50ms, command, false}, {100ms, command, true, true}, {150ms, command, false}});
        row("the other key in between", option,
            {{0ms, option}, {50ms, command}, {100ms, option}, {150ms, option, true, true}});
        row("the other key let go in between", option,
            {{0ms, option}, {50ms, command, false}, {100ms, option}});
        row("the other key twice", option, {{0ms, command}, {100ms, command}});
    }

    void doublePress()
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
};

QTEST_APPLESS_MAIN(TestDictationTrigger)
#include "tst_dictationtrigger.moc"

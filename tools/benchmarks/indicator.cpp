// Times the dictation indicator on the display there is: bench-indicator MODULE-FOLDER SETTINGS-FILE
// Prints: milliseconds from the call to the first frame for the first and the slowest of later shows, with
// the longest time the event loop stood still in the first; the share of a core that the process takes while
// 25 levels arrive each second; frames drawn in a second in which nothing changes.

#include "settings/AppSettings.h"
#include "settings/UserDefaults.h"
#include "ui/DictationHUDModel.h"
#include "ui/HUDController.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFile>

#include <cstdio>
#include <ctime>
#include <optional>
#include <random>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using namespace orvane;

namespace {

constexpr int laterShows = 10;
constexpr int levelsPerSecond = 25;
constexpr int secondsOfLevels = 10;
constexpr qsizetype waveformSize = 48;

void letPass(std::chrono::milliseconds time)
{
    QEventLoop loop;
    QTimer::singleShot(time, &loop, &QEventLoop::quit);
    loop.exec();
}

double milliseconds(const QElapsedTimer &timer)
{
    return static_cast<double>(timer.nsecsElapsed()) / 1e6;
}

double processorSeconds()
{
    timespec time{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
}

/// Counts the frames of the program's window of Qt Quick, which this program must not link if it is to time
/// the loading.
class FrameCounter : public QObject
{
    Q_OBJECT

public:
    FrameCounter() { QCoreApplication::instance()->installEventFilter(this); }

    [[nodiscard]] int frames() const { return m_frames; }

    void waitForMoreThan(int frames) const
    {
        while (m_frames <= frames)
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }

    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (event->type() == QEvent::Show && watched->inherits("QQuickWindow"))
            connect(watched, SIGNAL(frameSwapped()), this, SLOT(count()), Qt::UniqueConnection);
        return false;
    }

private Q_SLOTS:
    void count() { ++m_frames; }

private:
    int m_frames = 0;
};

/// The longest time between two turns of the event loop.
class Standstill
{
public:
    Standstill()
    {
        m_sinceLast.start();
        m_timer.callOnTimeout(&m_timer, [this] {
            m_longest = std::max(m_longest, milliseconds(m_sinceLast));
            m_sinceLast.restart();
        });
        m_timer.start(1ms);
    }
    [[nodiscard]] double longest() const { return m_longest; }

private:
    QElapsedTimer m_sinceLast;
    QTimer m_timer;
    double m_longest = 0;
};

double shareOfCoreWhileSpeaking(DictationHUDModel &model)
{
    std::mt19937 random(1);
    std::uniform_real_distribution<float> level(0, 1);
    QList<float> waveform(waveformSize);
    QTimer levels;
    levels.callOnTimeout(&levels, [&] {
        waveform.removeFirst();
        waveform.append(level(random));
        model.setWaveform(waveform);
    });
    levels.start(1000 / levelsPerSecond);
    letPass(1s);
    QElapsedTimer timer;
    timer.start();
    const double before = processorSeconds();
    letPass(std::chrono::seconds(secondsOfLevels));
    return (processorSeconds() - before) / (milliseconds(timer) / 1000);
}

} // namespace

int main(int argc, char **argv)
{
    const QApplication application(argc, argv);
    if (argc != 3) {
        std::fputs("Usage: bench-indicator MODULE-FOLDER SETTINGS-FILE\n", stderr);
        return 2;
    }
    UserDefaults defaults{QFile::decodeName(argv[2])};
    AppSettings settings(defaults);
    DictationHUDModel model(settings);
    HUDController controller(model, QFile::decodeName(argv[1]), [](const QString &) {});
    FrameCounter counter;
    letPass(100ms); // what the application itself does at the start

    model.setState(DictationState::Recording);
    QElapsedTimer timer;
    timer.start();
    std::optional<Standstill> standstill(std::in_place);
    controller.show();
    counter.waitForMoreThan(0);
    const double first = milliseconds(timer);
    letPass(10ms); // so that the last standstill counts
    const double blocked = standstill->longest();
    standstill.reset();

    double later = 0;
    for (int i = 0; i < laterShows; ++i) {
        letPass(200ms);
        controller.hide();
        letPass(200ms);
        const int before = counter.frames();
        timer.restart();
        controller.show();
        counter.waitForMoreThan(before);
        later = std::max(later, milliseconds(timer));
    }

    const int beforeSpeaking = counter.frames();
    const double share = shareOfCoreWhileSpeaking(model);
    const double framesPerSecond =
        static_cast<double>(counter.frames() - beforeSpeaking) / (secondsOfLevels + 1);
    letPass(500ms);
    const int beforeRest = counter.frames();
    letPass(1s);
    std::printf("first show %.1f ms (event loop stood still for %.1f ms), later shows %.1f ms, "
                "speaking %.1f %% of a core at %.0f frames/s, %d idle frames\n",
                first, blocked, later, share * 100, framesPerSecond, counter.frames() - beforeRest);
    return 0;
}

#include "indicator.moc"

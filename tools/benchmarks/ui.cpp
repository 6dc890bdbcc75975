// Measures the windows on the display there is: bench-ui FOLDER
// FOLDER is an application data folder with a history, whose titles end in a number of their own; a record of
// 20,000 segments is added. Prints one line of JSON: milliseconds, and MiB of private memory.

#include "tests/support/FakeFileChooser.h"
#include "tests/support/ServicesHome.h"
#include "tools/benchmarks/ProcessMemory.h"

#include "base/Async.h"
#include "desktop/KeyTap.h"
#include "ui/WindowController.h"
#include "ui/presentation/Desk.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QScopeGuard>

#include <algorithm>
#include <cstdio>
#include <functional>

using namespace Qt::StringLiterals;
using namespace orvane;

namespace {

constexpr int segments = 20'000;
constexpr int framesOfScrolling = 120;
constexpr qreal step = 90; // pixels a frame

double milliseconds(const QElapsedTimer &timer)
{
    return static_cast<double>(timer.nsecsElapsed()) / 1e6;
}

void letPass(int milliseconds)
{
    QEventLoop loop;
    QTimer::singleShot(milliseconds, &loop, &QEventLoop::quit);
    loop.exec();
}

void waitUntil(const std::function<bool()> &condition)
{
    while (!condition())
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 20);
}

/// Until the window has drawn once more. By name: Qt Quick comes with the windows, which is part of what is
/// measured.
void awaitFrame(QObject *window)
{
    QEventLoop loop;
    QObject::connect(window, SIGNAL(frameSwapped()), &loop, SLOT(quit()));
    loop.exec();
}

TranscriptRecord longRecord()
{
    TranscriptRecord record;
    record.title = u"Long"_s;
    for (int i = 0; i < segments; ++i) {
        const QString text =
            u" Копирование закончено, осталось проверить контрольные суммы и сказать об этом всем: "_s +
            QString::number(i);
        record.segments.append(
            {.start = i * 4000, .end = (i + 1) * 4000, .text = text, .speaker = i % 2 + 1});
        record.text += text;
    }
    return record;
}

class Bench
{
public:
    explicit Bench(const QString &folder)
    {
        AppServices::Environment environment = m_home.onDesktop(QStringLiteral(ORVANE_RESOURCES));
        environment.folders.applicationSupport = folder;
        environment.folders.caches = folder + u"/caches"_s;
        m_services = std::make_unique<AppServices>(environment);
        m_windows = std::make_unique<WindowController>(
            WindowController::Services{.settings = m_services->settings(),
                                       .defaults = m_services->defaults(),
                                       .makeDesk = [this] { return makeDesk(); },
                                       .moduleFolder = QStringLiteral(ORVANE_RESOURCES)});
    }

    [[nodiscard]] double open()
    {
        QElapsedTimer time;
        time.start();
        m_windows->showMain();
        awaitFrame(m_windows->mainWindow());
        return milliseconds(time);
    }

    void close()
    {
        m_windows->mainWindow()->close();
        waitUntil([this] { return !m_windows->mainWindow(); });
        letPass(300);
    }

    /// The slowest letter of a number that one title ends with.
    [[nodiscard]] double search()
    {
        HistoryList &list = *m_desk->history();
        waitUntil([&] { return list.isLoaded(); });
        letPass(5000); // until searching is made fast
        double slowest = 0;
        for (const QString &typed : {u"8"_s, u"87"_s, u"876"_s, u"8765"_s}) {
            const int before = list.count();
            QElapsedTimer time;
            time.start();
            list.setSearch(typed);
            waitUntil([&] { return list.count() != before; });
            slowest = std::max(slowest, milliseconds(time));
        }
        list.setSearch({});
        waitUntil([&] { return list.count() > 1000; });
        return slowest;
    }

    [[nodiscard]] double openLongRecord()
    {
        const TranscriptRecord record = m_services->history().add(longRecord());
        letPass(1000);
        QElapsedTimer time;
        time.start();
        m_desk->openRecord(record.id.toString());
        waitUntil([&] { return m_desk->record()->isLoaded(); });
        awaitFrame(m_windows->mainWindow());
        return milliseconds(time);
    }

    /// The slowest frame.
    [[nodiscard]] double scroll()
    {
        QWindow *window = m_windows->mainWindow();
        QObject *list = window->findChild<QObject *>(u"segments"_s);
        double slowest = 0;
        for (int i = 0; i < framesOfScrolling; ++i) {
            QElapsedTimer time;
            time.start();
            list->setProperty("contentY", list->property("contentY").toReal() + step);
            awaitFrame(window);
            slowest = std::max(slowest, milliseconds(time));
        }
        return slowest;
    }

    void leave(const QString &page) { m_desk->setPage(page); }

private:
    [[nodiscard]] std::unique_ptr<Desk> makeDesk()
    {
        auto desk = std::make_unique<Desk>(*m_services, m_keys, m_files);
        m_desk = desk.get();
        return desk;
    }

    test::ServicesHome m_home;
    KeyTap m_keys;
    test::FakeFileChooser m_files;
    std::unique_ptr<AppServices> m_services;
    std::unique_ptr<WindowController> m_windows;
    Desk *m_desk = nullptr;
};

} // namespace

int main(int argc, char **argv)
{
    if (argc != 2) {
        std::fprintf(stderr, "usage: bench-ui FOLDER\n");
        return 2;
    }
    QApplication application(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    const auto finish = qScopeGuard(endAbandonedTasks);
    Bench bench(QString::fromLocal8Bit(argv[1]));
    const double first = bench.open();
    const double letter = bench.search();
    const double record = bench.openLongRecord();
    const double frame = bench.scroll();
    bench.leave(u"file"_s);
    bench.close();
    const double memory = ProcessMemory::ofThisOne();
    const double later = bench.open();
    bench.close();
    std::printf(
        R"({"first_ms": %.1f, "later_ms": %.1f, "letter_ms": %.1f, "record_ms": %.1f, "frame_ms": %.1f, )"
        R"("growth_mib": %.1f})"
        "\n",
        first, later, letter, record, frame, ProcessMemory::ofThisOne() - memory);
    return 0;
}

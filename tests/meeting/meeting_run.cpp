// A process to kill: records and transcribes meetings one after the other, or, started again, deals with what
// was left behind. Tells each status and how many samples of which file the microphone has heard.
//
// usage: meeting-run record|recover FOLDER ENGINE

#include "base/Async.h"
#include "tests/meeting/MeetingHome.h"

#include <QCoreApplication>

#include <QCoroSignal>

#include <atomic>
#include <cstdio>
#include <thread>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using namespace orvane;

namespace {

/// How much faster than life the microphone hears.
constexpr int haste = 10;
constexpr size_t piece = 1600;

void tell(const char *what, const QString &text)
{
    std::printf("%s %s\n", what, qPrintable(text));
    std::fflush(stdout);
}

/// Feeds the microphone while it lives.
class Speaker
{
public:
    Speaker(FakeMeetingSource &microphone, const QString &name)
        : m_thread([&microphone, name](const std::stop_token &stop) {
              auto next = std::chrono::steady_clock::now();
              for (size_t heard = 0; !stop.stop_requested(); heard += piece) {
                  microphone.hear(FakeMeetingSource::pattern(heard, piece));
                  tell("heard", u"%1 %2"_s.arg(heard + piece).arg(name));
                  next += 100ms / haste;
                  std::this_thread::sleep_until(next);
              }
          })
    {}

private:
    std::jthread m_thread;
};

QCoro::Task<> record(MeetingHome *home)
{
    MeetingTranscriber &meeting = home->meeting();
    while (true) {
        const QStringList before = home->audio();
        co_await meeting.start();
        if (!meeting.isRunning())
            throw Error(meeting.errorText());
        {
            QStringList names = home->audio();
            names.removeIf([&before](const QString &name) { return before.contains(name); });
            const Speaker speaker(home->microphone(), names.first());
            co_await sleepFor(2200ms); // beyond a sync
        }
        meeting.stop();
        co_await qCoro(&meeting, &MeetingTranscriber::outcomeChanged);
        if (!meeting.errorText().isEmpty())
            throw Error(meeting.errorText());
    }
}

QCoro::Task<> recover(MeetingHome *home)
{
    MeetingTranscriber &meeting = home->meeting();
    co_await meeting.findLeftovers();
    while (!meeting.leftovers().isEmpty()) {
        meeting.transcribeLeftover(meeting.leftovers().first().audioFileName);
        co_await qCoro(&meeting, &MeetingTranscriber::outcomeChanged);
        co_await home->history().flush();
        co_await sleepFor(1ms);
        if (!meeting.errorText().isEmpty())
            throw Error(meeting.errorText());
    }
}

QCoro::Task<> run(QStringList arguments, MeetingHome *home)
{
    int status = 0;
    try {
        if (arguments[1] == u"record")
            co_await record(home);
        else
            co_await recover(home);
    } catch (const Error &error) {
        std::fprintf(stderr, "%s\n", error.what());
        status = 1;
    }
    co_await home->engine().stopAndWait();
    QCoreApplication::exit(status);
}

} // namespace

int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() != 4)
        return 2;
    int status = 0;
    {
        MeetingHome home(arguments[2], arguments[3]);
        QObject::connect(&home.meeting(), &MeetingTranscriber::statusTextChanged, &home.meeting(),
                         [&home] { tell("status", home.meeting().statusText()); });
        QMetaObject::invokeMethod(qApp, [&] { spawn(run(arguments, &home)); }, Qt::QueuedConnection);
        status = QCoreApplication::exec();
    }
    endAbandonedTasks();
    return status;
}

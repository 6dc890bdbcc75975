#include "app/commandline/Interruption.h"

#include <array>
#include <csignal>
#include <sys/socket.h>
#include <unistd.h>

namespace orvane {

namespace {

constexpr std::array signals = {SIGINT, SIGTERM, SIGHUP};

// The handler may only do what is safe inside a signal: it passes the number through this pair.
std::array<int, 2> channel = {-1, -1};

void passOn(int signal)
{
    const auto number = char(signal);
    [[maybe_unused]] const ssize_t written = ::write(channel[0], &number, 1);
}

} // namespace

Interruption::Interruption(QObject *parent) : QObject(parent)
{
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0, channel.data()) != 0)
        return; // the signals keep their usual effect
    m_notifier = std::make_unique<QSocketNotifier>(channel[1], QSocketNotifier::Read);
    connect(m_notifier.get(), &QSocketNotifier::activated, this, &Interruption::receive);

    struct sigaction action = {};
    action.sa_handler = passOn;
    action.sa_flags = SA_RESTART | int(SA_RESETHAND);
    for (const int signal : signals) {
        struct sigaction usual = {};
        ::sigaction(signal, nullptr, &usual);
        if (usual.sa_handler == SIG_IGN) // as nohup asks for
            continue;
        ::sigaction(signal, &action, nullptr);
        m_taken.append(signal);
    }
}

Interruption::~Interruption()
{
    for (const int signal : std::as_const(m_taken))
        ::signal(signal, SIG_DFL);
    m_notifier.reset();
    for (const int end : channel)
        ::close(end);
}

void Interruption::receive()
{
    char number = 0;
    if (::read(channel[1], &number, 1) == 1)
        Q_EMIT requested(number);
}

} // namespace orvane

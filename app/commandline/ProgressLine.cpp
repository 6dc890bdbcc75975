#include "app/commandline/ProgressLine.h"

#include "base/localization/Localization.h"
#include "transcript/DisplaySegment.h"

#include <algorithm>
#include <cstdio>
#include <sys/ioctl.h>
#include <unistd.h>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace orvane {

namespace {

constexpr int defaultColumns = 80;

qsizetype terminalColumns()
{
    winsize size = {};
    const bool known = ::ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
    return known ? size.ws_col : defaultColumns;
}

void rewriteLine(const QString &text)
{
    std::fprintf(stderr, "\r\033[K%s", text.toUtf8().constData());
    std::fflush(stderr);
}

} // namespace

ProgressLine::ProgressLine(const QString &title, std::function<State()> state, QObject *parent)
    : QObject(parent),
      m_title(title),
      m_state(std::move(state)),
      m_isShown(::isatty(STDERR_FILENO) == 1)
{
    if (!m_isShown)
        return;
    m_elapsed.start();
    connect(&m_timer, &QTimer::timeout, this, &ProgressLine::paint);
    m_timer.start(200ms);
    paint();
}

ProgressLine::~ProgressLine()
{
    if (m_isShown)
        rewriteLine({});
}

void ProgressLine::paint()
{
    const State state = m_state();
    QString line = u"%1 · %2 · %3"_s.arg(timecodeOf(m_elapsed.elapsed()), m_title, state.stage);
    if (state.remainingMs >= 0)
        line += u" · "_s + Localization::text(u"осталось ≈ ") + timecodeOf(state.remainingMs);
    const qsizetype columns = std::max<qsizetype>(terminalColumns() - 1, 1); // a full last column would wrap
    if (line.size() > columns)
        line = line.first(columns - 1) + u'…';
    rewriteLine(line);
}

} // namespace orvane

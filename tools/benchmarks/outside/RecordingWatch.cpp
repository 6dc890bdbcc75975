#include "tools/benchmarks/outside/RecordingWatch.h"

using namespace Qt::StringLiterals;

namespace orvane {

RecordingWatch::RecordingWatch(const QProcessEnvironment &environment)
{
    m_subscription.setProcessEnvironment(environment);
    m_subscription.start(u"pactl"_s, {u"subscribe"_s});
    if (!m_subscription.waitForStarted())
        qFatal("pactl cannot be started");
}

RecordingWatch::~RecordingWatch()
{
    m_subscription.kill();
    m_subscription.waitForFinished();
}

void RecordingWatch::begin()
{
    m_subscription.waitForReadyRead(0);
    m_subscription.readAll();
    m_events.clear();
}

bool RecordingWatch::hasBegun()
{
    m_subscription.waitForReadyRead(0);
    m_events += m_subscription.readAll();
    return m_events.contains("'new' on source-output");
}

} // namespace orvane

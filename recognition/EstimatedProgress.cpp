#include "recognition/EstimatedProgress.h"

#include <algorithm>
#include <utility>

using namespace std::chrono_literals;

namespace orvane {

namespace {

constexpr auto interval = 200ms;
/// How far the bar may go on an estimate alone.
constexpr double maxEstimated = 0.97;

} // namespace

EstimatedProgress::EstimatedProgress(Progress progress, std::shared_ptr<RecognitionEstimate> estimate,
                                     const QString &modelPath)
    : m_progress(std::move(progress)),
      m_estimate(std::move(estimate)),
      m_modelPath(modelPath)
{
    m_timer.callOnTimeout([this] { report(); });
    m_progress.report(0);
}

void EstimatedProgress::setLength(Duration length)
{
    m_length = length;
    if (m_taken) {
        m_estimate->learn(m_modelPath, length, *m_taken);
        return;
    }
    m_expected = m_estimate->expected(m_modelPath, length);
    m_timer.start(interval);
    report();
}

void EstimatedProgress::begin()
{
    m_time.start();
}

void EstimatedProgress::end()
{
    m_timer.stop();
    m_taken = 1ms * m_time.elapsed();
    if (m_length)
        m_estimate->learn(m_modelPath, *m_length, *m_taken);
}

void EstimatedProgress::report() const
{
    // Before the engine is loaded nothing has been recognised yet.
    const Duration elapsed(m_time.isValid() ? m_time.elapsed() : 0);
    const double fraction = std::chrono::duration<double>(elapsed) / std::max(m_expected, Duration(1));
    const bool isOverdue = elapsed > m_expected;
    m_progress.report(std::min(fraction, maxEstimated),
                      isOverdue ? std::nullopt : std::optional(m_expected - elapsed));
}

} // namespace orvane

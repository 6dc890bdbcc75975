#pragma once

#include "base/Operation.h"
#include "recognition/RecognitionEstimate.h"

#include <QElapsedTimer>
#include <QTimer>

#include <memory>
#include <optional>

namespace orvane {

/// Reports, a few times a second while it lives, how far a recognition should be by now. Main thread.
class EstimatedProgress
{
public:
    using Duration = RecognitionEstimate::Duration;

    EstimatedProgress(Progress progress, std::shared_ptr<RecognitionEstimate> estimate,
                      const QString &modelPath);

    /// Of the recording, as soon as it is known, even after the end.
    void setLength(Duration length);
    /// The engine begins to recognise.
    void begin();
    /// It has recognised everything: the estimate learns from that.
    void end();

private:
    void report() const;

    const Progress m_progress;
    const std::shared_ptr<RecognitionEstimate> m_estimate;
    const QString m_modelPath;
    std::optional<Duration> m_length;
    Duration m_expected{0};
    QElapsedTimer m_time;
    /// Once everything is recognised.
    std::optional<Duration> m_taken;
    QTimer m_timer;
};

} // namespace orvane

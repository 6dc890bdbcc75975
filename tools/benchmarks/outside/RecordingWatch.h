#pragma once

#include <QByteArray>
#include <QProcess>

namespace orvane {

/// Sees when programs begin to record at a sound server. Polled, as ScreenWatch is.
class RecordingWatch
{
public:
    /// The environment is one in which programs find the server.
    explicit RecordingWatch(const QProcessEnvironment &environment);
    ~RecordingWatch();
    Q_DISABLE_COPY_MOVE(RecordingWatch)

    /// Forgets what has happened.
    void begin();
    /// Whether since then a program has opened a stream to record from.
    [[nodiscard]] bool hasBegun();

private:
    QProcess m_subscription;
    QByteArray m_events;
};

} // namespace orvane

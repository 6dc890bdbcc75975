#pragma once

#include <QList>
#include <QObject>
#include <QSocketNotifier>

#include <memory>

namespace orvane {

/// Tells, on the main thread and through the event loop, that the user or the system asks the program
/// to end: Ctrl-C, SIGTERM or a closed terminal. One instance a process; the signals have their usual
/// effect again when it is gone, and from the second one on, so that an impatient Ctrl-C always works. A
/// signal that was to be ignored when the program started stays ignored.
class Interruption : public QObject
{
    Q_OBJECT

public:
    explicit Interruption(QObject *parent = nullptr);
    ~Interruption() override;

    /// The exit status that shells expect after this signal.
    [[nodiscard]] static int exitStatus(int signal) { return 128 + signal; }

Q_SIGNALS:
    void requested(int signal);

private:
    void receive();

    std::unique_ptr<QSocketNotifier> m_notifier;
    QList<int> m_taken;
};

} // namespace orvane

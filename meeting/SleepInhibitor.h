#pragma once

#include <QString>

#include <memory>

namespace orvane {

/// Keeps the system awake while it lives, where the system lets itself be asked; elsewhere it does nothing.
/// Never waits. Main thread.
class SleepInhibitor
{
public:
    /// The reason is shown by the system to whoever asks why it does not sleep.
    explicit SleepInhibitor(const QString &reason);
    ~SleepInhibitor();
    Q_DISABLE_COPY_MOVE(SleepInhibitor)

private:
    struct Lock;
    const std::unique_ptr<Lock> m_lock;
};

} // namespace orvane

#pragma once

#include "desktop/wayland/WaylandPaster.h"

#include <QCoroTask>
#include <QThread>

#include <functional>

namespace orvane {

/// Where the paster lives. Whoever asks for an offered text is answered at once, also when that is this
/// program's own toolkit, for which the main thread waits. Main thread.
class WaylandThread
{
public:
    WaylandThread();
    /// Waits for what has begun.
    ~WaylandThread();
    Q_DISABLE_COPY_MOVE(WaylandThread)

    /// What the function, called there, returned.
    [[nodiscard]] QCoro::Task<bool> run(std::function<bool(WaylandPaster &)> work);

private:
    QThread m_thread;
    WaylandPaster *m_paster; // ends with the thread
};

} // namespace orvane

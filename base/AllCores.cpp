#include "base/AllCores.h"

#include <QThread>

#include <algorithm>
#include <system_error>
#include <thread>
#include <vector>

namespace orvane {

void runOnAllCores(size_t items, size_t itemsPerThread, const std::function<void()> &work)
{
    const size_t cores = static_cast<size_t>(std::max(1, QThread::idealThreadCount()));
    const size_t helperCount = std::min(cores - 1, items / itemsPerThread);
    std::vector<std::jthread> helpers;
    try {
        while (helpers.size() < helperCount)
            helpers.emplace_back(work);
    } catch (const std::system_error &error) {
        qWarning("%s", error.what()); // those threads that there are do the work
    }
    work();
}

} // namespace orvane

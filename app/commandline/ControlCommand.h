#pragma once

#include <QString>

namespace orvane {

/// `orvane toggle | start | stop | cancel | status`: asks the application that runs in this session to do it.
class ControlCommand
{
public:
    struct Options
    {
        /// The method of the application's bus interface.
        QString method;
    };

    /// Returns the exit status; throws Error when nobody runs or the application refuses.
    [[nodiscard]] static int run(const Options &options);

    /// Has a running application come forward; false when there is none.
    static bool activate();
};

} // namespace orvane

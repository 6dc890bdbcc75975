#pragma once

#include <QString>
#include <QStringList>

namespace orvane {

/// `orvane toggle | tap | start | stop | cancel | status` and `orvane meeting …`: asks the application that
/// runs in this session to do it.
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

    /// Has a running application come forward, with files to transcribe; false when there is none.
    static bool activate(const QStringList &files);
};

} // namespace orvane

#pragma once

#include "diagnostics/SystemCheck.h"

#include <QCoroTask>

#include <stop_token>

namespace orvane {

class AppServices;

/// `orvane check`: whether everything that the program needs works here.
class CheckCommand
{
public:
    struct Options
    {
        bool asJson = false;
    };

    CheckCommand(AppServices &services, Options options);

    /// Returns the exit status: a failure when something is bad.
    QCoro::Task<int> run();

    /// Ends run() soon.
    void interrupt() { m_stop.request_stop(); }

private:
    [[nodiscard]] QString lines() const;
    [[nodiscard]] QByteArray json() const;

    SystemCheck m_check;
    const Options m_options;
    std::stop_source m_stop;
};

} // namespace orvane

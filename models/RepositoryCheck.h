#pragma once

#include "base/Scope.h"

#include <QString>
#include <QThreadPool>

#include <QCoroTask>

#include <stop_token>

namespace orvane {

/// Finds out whether models can be downloaded from an address, by asking for the beginnings of some. Main
/// thread; the work has a thread of its own.
class RepositoryCheck
{
public:
    RepositoryCheck();
    /// Interrupts a running check and waits for its end.
    ~RepositoryCheck();

    /// Resumes when a model was found there. Throws DownloadError with why there is none, also for an address
    /// whose answers others could change on their way; or Cancelled.
    [[nodiscard]] QCoro::Task<> run(QString address, std::stop_token stop = {});

private:
    QThreadPool m_pool;
    Scope m_scope;
};

} // namespace orvane

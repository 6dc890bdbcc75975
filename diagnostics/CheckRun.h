#pragma once

#include "base/Scope.h"
#include "base/localization/Localization.h"
#include "diagnostics/CheckResult.h"

#include <QList>
#include <QObject>

#include <QCoroTask>

#include <functional>
#include <memory>
#include <optional>
#include <stop_token>

namespace orvane {

class OneTimeEvent;

/// A list of checks and what they have found. They run all at once, and each is reported when it is done.
/// Main thread.
class CheckRun : public QObject
{
    Q_OBJECT

public:
    struct Check
    {
        /// What scripts know it by.
        QString id;
        Localization::Text name;
        /// Ends with what it has found; what it throws is as bad. Blocks nothing.
        std::function<QCoro::Task<CheckResult>(std::stop_token)> run;
    };

    explicit CheckRun(QList<Check> checks, QObject *parent = nullptr);
    ~CheckRun() override;

    [[nodiscard]] qsizetype count() const { return m_checks.size(); }
    [[nodiscard]] const Check &check(qsizetype index) const { return m_checks.at(index); }
    /// Of the last run; none while it has not been found out.
    [[nodiscard]] std::optional<CheckResult> result(qsizetype index) const { return m_results.at(index); }
    [[nodiscard]] bool isRunning() const { return m_run != nullptr; }
    /// Something has been found to be bad.
    [[nodiscard]] bool hasFault() const;

    /// Ends when all are done. While one runs, a second call waits for the end of that. Throws Cancelled when
    /// stopped.
    [[nodiscard]] QCoro::Task<> run(std::stop_token stop = {});

Q_SIGNALS:
    void resultsChanged();
    void runningChanged();

private:
    QCoro::Task<> runOne(qsizetype index, std::stop_token stop);

    const QList<Check> m_checks;
    QList<std::optional<CheckResult>> m_results;
    qsizetype m_pending = 0;
    /// The end of the run that is in progress.
    std::shared_ptr<OneTimeEvent> m_run;
    Scope m_scope;
};

} // namespace orvane

#pragma once

#include "base/Error.h"
#include "base/Scope.h"

#include <QObject>
#include <QPointer>
#include <QString>

#include <QCoroTask>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <stop_token>
#include <type_traits>

namespace orvane {

class Operation;

/// Where work tells how far it is. Copied freely; what is reported after the work's run has ended goes
/// nowhere, and so does everything reported to a default-made one. Main thread.
class Progress
{
public:
    Progress() = default;

    /// From 0 to 1, and the time to the end where it can be estimated.
    void report(double fraction, std::optional<std::chrono::milliseconds> remaining = {}) const;
    /// The current stage in the interface language.
    void setStatus(const QString &text) const;

    /// For a part of the work that words its stages for others: only how far it is goes on from there.
    [[nodiscard]] Progress withoutStatus() const;

private:
    friend class Operation;
    Progress(Operation *operation, std::stop_token run) : m_operation(operation), m_run(std::move(run)) {}

    [[nodiscard]] Operation *listener() const;

    QPointer<Operation> m_operation;
    std::stop_token m_run;
    bool m_hasStatus = true;
};

/// What views show of something that takes long and can be cancelled: whether it runs, how far it is, the
/// last error. One run at a time. Main thread.
class Operation : public QObject
{
    Q_OBJECT
    Q_PROPERTY(bool running READ isRunning NOTIFY runningChanged)
    Q_PROPERTY(double progress READ progress NOTIFY progressChanged)
    Q_PROPERTY(qint64 remainingMs READ remainingMs NOTIFY progressChanged)
    Q_PROPERTY(QString status READ status NOTIFY statusChanged)
    Q_PROPERTY(QString error READ error NOTIFY errorChanged)

public:
    template <typename Result>
    using Work = std::function<QCoro::Task<Result>(Progress, std::stop_token)>;

    using QObject::QObject;
    /// Cancels what runs.
    ~Operation() override;

    [[nodiscard]] bool isRunning() const { return m_running; }
    /// From 0 to 1; 1 only when done.
    [[nodiscard]] double progress() const { return m_progress; }
    /// Milliseconds to the end; −1 while unknown.
    [[nodiscard]] qint64 remainingMs() const { return m_remainingMs; }
    /// The stage, or how the last run ended, in the interface language.
    [[nodiscard]] QString status() const { return m_status; }
    /// What went wrong last, one sentence; empty when nothing has since the last start. Work that succeeds
    /// may have reported something by setError().
    [[nodiscard]] QString error() const { return m_error; }

    /// Runs the work, which was made for this run, and publishes how it goes. Ends as the work does: with its
    /// result, with an Error whose description is error() now, or with Cancelled, by cancel() or by `stop`.
    /// Not while one runs.
    template <typename Result>
    QCoro::Task<Result> run(Work<Result> work, std::stop_token stop = {})
    {
        const std::stop_token run = begin();
        const std::stop_callback cancelThis(stop, [self = QPointer(this), run] {
            if (self)
                self->cancel(run);
        });
        QString failure;
        try {
            if constexpr (std::is_void_v<Result>) {
                co_await m_scope(work(Progress(this, run), run), run);
                end({});
                co_return;
            } else {
                Result result = co_await m_scope(work(Progress(this, run), run), run);
                end({});
                co_return result;
            }
        } catch (const Cancelled &) {
            if (!run.stop_requested()) // what the work needed was given up
                end({});
            throw;
        } catch (const std::exception &error) {
            failure = descriptionOf(error);
        }
        end(failure);
        throw Error(failure);
    }

    /// Ends the run with Cancelled and is ready for the next at once.
    void cancel();

    /// For what is refused before it runs, and for how a run ended.
    void setError(const QString &text);
    void setStatus(const QString &text);
    void setProgress(double fraction, qint64 remainingMs = -1);

Q_SIGNALS:
    void runningChanged();
    void progressChanged();
    void statusChanged();
    void errorChanged();

private:
    [[nodiscard]] std::stop_token begin();
    void end(const QString &failure);
    void cancel(const std::stop_token &run);
    void setRunning(bool running);

    bool m_running = false;
    double m_progress = 0;
    qint64 m_remainingMs = -1;
    QString m_status;
    QString m_error;
    /// Of the run; stopped when it ends, so that what belongs to it can end too.
    std::stop_source m_run;
    Scope m_scope;
};

} // namespace orvane

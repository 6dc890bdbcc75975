#pragma once

#include "base/Scope.h"

#include <QHash>
#include <QObject>
#include <QString>
#include <QThreadPool>
#include <QTimer>
#include <QUuid>

#include <QCoroTask>

#include <functional>

namespace orvane {

class HistoryArchive;

/// The changes of records on their way to the disk. One that could not be written is tried again after a
/// while, and as soon as another could be. Main thread.
class HistoryWrites : public QObject
{
    Q_OBJECT

public:
    /// The pool has one thread, on which alone the archive is used. Both outlive this object.
    HistoryWrites(HistoryArchive &archive, QThreadPool &pool);

    /// Has the work, which changes that record, done by the pool.
    void start(const QUuid &id, std::function<void()> work);
    /// Whether a change of that record is on its way.
    [[nodiscard]] bool isPending(const QUuid &id) const { return m_pending.contains(id); }

    /// Why the record is not on the disk as it should be, one sentence; empty unless the last attempt failed.
    [[nodiscard]] QString failure(const QUuid &id) const { return m_failures.value(id); }
    /// That of any record.
    [[nodiscard]] QString anyFailure() const;

Q_SIGNALS:
    /// An attempt has ended, with that failure or none.
    void ended(const QString &failure);

private:
    QCoro::Task<> write(QUuid id, std::function<void()> work);
    void planRetry(bool hasWorked);
    void retry();

    HistoryArchive &m_archive;
    QThreadPool &m_pool;
    QHash<QUuid, int> m_pending;
    QHash<QUuid, QString> m_failures;
    QTimer m_retryDelay;
    Scope m_scope;
};

} // namespace orvane

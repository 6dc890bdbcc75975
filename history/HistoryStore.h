#pragma once

#include "base/Scope.h"
#include "base/StandardFolders.h"
#include "history/HistoryFolder.h"
#include "history/TranscriptRecord.h"

#include <QFileSystemWatcher>
#include <QHash>
#include <QList>
#include <QObject>
#include <QThreadPool>
#include <QTimer>

#include <QCoroTask>

#include <functional>
#include <optional>

namespace orvane {

/// The history: its records in memory, every change mirrored to disk at once. The list here is what
/// counts; a change whose file could not be written lives until the process ends. Main thread; nothing
/// here waits for the disk but the destructor, which lets the last writes end.
///
/// The records load in the background on first use: when they are awaited, watched or changed. Changes made
/// before that are taken up when they are there.
class HistoryStore : public QObject
{
    Q_OBJECT
    Q_PROPERTY(bool loaded READ isLoaded NOTIFY loadedChanged)
    Q_PROPERTY(QString lastError READ lastError NOTIFY lastErrorChanged)

public:
    explicit HistoryStore(const StandardFolders &folders, QObject *parent = nullptr);
    ~HistoryStore() override;

    [[nodiscard]] bool isLoaded() const { return m_loaded; }
    [[nodiscard]] QCoro::Task<> whenLoaded();

    /// Newest first; one that was added stands in front.
    [[nodiscard]] const QList<TranscriptRecord> &records() const { return m_records; }
    /// The first with that id, as all operations below find it; without one they do nothing.
    [[nodiscard]] std::optional<TranscriptRecord> record(const QUuid &id) const;

    /// What a user should know of records that are not on disk as they stand here: one sentence, empty
    /// when all is well.
    [[nodiscard]] QString lastError() const { return m_lastError; }

    /// Returns the record as it is stored: with an event for its text unless that is empty.
    TranscriptRecord add(TranscriptRecord record);
    /// A title of white space alone changes nothing.
    void rename(const QUuid &id, const QString &title);
    void setCorrected(const QUuid &id, const QString &text);
    void setSummary(const QUuid &id, const QString &text);
    /// `prompt` is the user's question where the event answers one.
    void appendEvent(const QUuid &id, RecordEvent::Kind kind, const std::optional<QString> &prompt,
                     const QString &text);
    /// The result of transcribing anew; what was made of the old text goes. Without segments the
    /// duration stays.
    void updateTranscription(const QUuid &id, const QList<TranscriptRecord::Segment> &segments,
                             const QString &text, const QString &modelID, const QString &languageCode);
    /// Deletes the record and its file, never a meeting's audio.
    void remove(const QUuid &id);

    /// Ends when every change made so far is on disk or in `lastError`.
    [[nodiscard]] QCoro::Task<> flush();
    /// Ends when that record is on disk as it stands here, or gone from it as from here. Throws Error, one
    /// sentence, when the last attempt has failed; also for a record that was saved long ago.
    [[nodiscard]] QCoro::Task<> whenSaved(QUuid id);

    /// Ends when what other processes have done in the history folder so far appears here.
    [[nodiscard]] QCoro::Task<> refresh();
    /// From now on what other processes do in the history folder appears here. A change made here that
    /// is still on its way to the disk wins over theirs.
    void watch();

Q_SIGNALS:
    void loadedChanged();
    void recordsChanged();
    void lastErrorChanged();

private:
    void startLoading();
    QCoro::Task<> load();
    void publish(QList<TranscriptRecord> records);
    /// Runs the change now, or once the records are loaded.
    void whenReady(std::function<void()> change);
    void change(const QUuid &id, const std::function<void(TranscriptRecord &)> &change);

    void save(const TranscriptRecord &record);
    QCoro::Task<> write(QUuid id, std::function<void()> work);
    void noteOutcome(const QUuid &id, const QString &failure);

    QCoro::Task<> followWhenLoaded();
    void followFolder();
    void takeOver(const QHash<QUuid, QList<TranscriptRecord>> &changes);
    [[nodiscard]] bool replace(const QUuid &id, const QList<TranscriptRecord> &now);

    const QString m_directory;
    QList<TranscriptRecord> m_records;
    bool m_isLoading = false;
    bool m_loaded = false;
    QList<std::function<void()>> m_waiting;

    /// Used on the pool's thread only.
    HistoryFolder m_folder;
    /// One thread: loading, writes and rescans happen in the order in which they were asked for.
    QThreadPool m_pool;
    QHash<QUuid, int> m_pendingWrites;
    /// By record, the last one in front of the user.
    QHash<QUuid, QString> m_failures;
    QString m_lastError;

    QFileSystemWatcher *m_watcher = nullptr;
    QTimer m_rescanDelay;
    Scope m_scope;
};

} // namespace orvane

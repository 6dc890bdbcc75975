#pragma once

#include "base/Scope.h"
#include "base/StandardFolders.h"
#include "base/files/FolderWatch.h"
#include "history/HistoryArchive.h"
#include "history/HistoryWrites.h"
#include "history/RecordSummary.h"
#include "history/TranscriptRecord.h"

#include <QList>
#include <QObject>
#include <QSet>
#include <QThreadPool>

#include <QCoroTask>

#include <functional>
#include <optional>

namespace orvane {

/// The history: what lists show of it in memory, every change on its way to the disk at once. A change whose
/// file could not be written counts as made, here, and is written later. Main thread; nothing here waits for
/// the disk but the destructor, which lets the last writes end.
///
/// The list is read on first use; changes and single records need none.
class HistoryStore : public QObject
{
    Q_OBJECT
    Q_PROPERTY(bool loaded READ isLoaded NOTIFY loadedChanged)
    Q_PROPERTY(QString lastError READ lastError NOTIFY lastErrorChanged)

public:
    explicit HistoryStore(const StandardFolders &folders, QObject *parent = nullptr);
    ~HistoryStore() override;

    [[nodiscard]] bool isLoaded() const { return m_loaded; }
    /// Ends when the list has been read, as far as it can be.
    [[nodiscard]] QCoro::Task<> whenLoaded();

    /// Newest first; one that was added stands in front.
    [[nodiscard]] const QList<RecordSummary> &records() const { return m_records; }

    /// The whole record, with every change made so far. Throws Error when there is none of that id.
    [[nodiscard]] QCoro::Task<TranscriptRecord> record(QUuid id);
    /// The records that hold every word of the text in title, text, corrected text or protocol, as parts of
    /// words and in any case of letters.
    [[nodiscard]] QCoro::Task<QSet<QUuid>> search(QString text);
    /// The recordings that have a record.
    [[nodiscard]] QCoro::Task<QSet<QString>> audioFileNames();

    /// What a user should know of records that are not on disk as they stand here: one sentence, empty
    /// when all is well.
    [[nodiscard]] QString lastError() const { return m_lastError; }

    /// Returns the record as it is stored: with an event for its text unless that is empty.
    TranscriptRecord add(TranscriptRecord record);
    // All below change nothing when there is no record of that id.
    /// A title of white space alone changes nothing.
    void rename(const QUuid &id, const QString &title);
    /// An empty name takes the speaker's away.
    void renameSpeaker(const QUuid &id, qint64 speaker, const QString &name);
    void setCorrected(const QUuid &id, const QString &text);
    void setSummary(const QUuid &id, const QString &text);
    /// `prompt` is the user's question where the event answers one.
    void appendEvent(const QUuid &id, RecordEvent::Kind kind, const std::optional<QString> &prompt,
                     const QString &text);
    /// The result of transcribing anew; what was made of the old text goes. Without segments the
    /// duration stays.
    void updateTranscription(const QUuid &id, const QList<TranscriptRecord::Segment> &segments,
                             const QString &text, const QString &modelID, const QString &languageCode);
    /// Deletes the record and its files, never a meeting's audio.
    void remove(const QUuid &id);

    /// Ends when every change made so far is on disk or in `lastError`.
    [[nodiscard]] QCoro::Task<> flush();
    /// Ends when that record is on disk as it stands here, or gone from it as from here. Throws Error, one
    /// sentence, when the last attempt has failed; also for a record that was saved long ago.
    [[nodiscard]] QCoro::Task<> whenSaved(QUuid id);

    /// Ends when what other processes have done in the history folder so far appears here.
    [[nodiscard]] QCoro::Task<> refresh();
    /// Ends when the words of deleted records are in no file any more. watch() sees to that by itself.
    [[nodiscard]] QCoro::Task<> eraseDeleted();
    /// Once the list has been read, what other processes do in the history folder appears in it, and
    /// searching is made fast.
    void watch();

Q_SIGNALS:
    void loadedChanged();
    void recordsChanged();
    /// Something in the record, which need not be what lists show.
    void recordChanged(const QUuid &id);
    void lastErrorChanged();

private:
    using SummaryEdit = std::function<void(RecordSummary &)>;

    void startLoading();
    QCoro::Task<> load();
    QCoro::Task<> list();
    void takeOver(const QList<RecordSummary> &now);
    void change(const QUuid &id, const RecordEdit &edit, const SummaryEdit &shown = {});
    void changeLogged(const QUuid &id, const RecordEvent &event, const RecordEdit &edit,
                      const SummaryEdit &shown = {});

    void publishError(const QString &latest);

    void followFolder();
    void startPreparingSearch();
    QCoro::Task<> prepareSearch();

    const QString m_directory;
    QList<RecordSummary> m_records;
    bool m_isLoading = false;
    bool m_loaded = false;

    /// Used on the pool's thread only.
    HistoryArchive m_archive;
    /// One thread: all that is asked for happens in that order.
    QThreadPool m_pool;
    HistoryWrites m_writes;
    QString m_notice;
    QString m_lastError;

    bool m_isPreparingSearch = false;
    bool m_isWatching = false;
    std::optional<FolderWatch> m_folderWatch;
    Scope m_scope;
};

} // namespace orvane

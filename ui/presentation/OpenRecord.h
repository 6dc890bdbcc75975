#pragma once

#include "history/TranscriptRecord.h"
#include "ui/presentation/RecordWork.h"
#include "ui/presentation/RowModel.h"
#include "ui/presentation/SegmentList.h"

#include <QUrl>

namespace orvane {

class HistoryStore;
class Notices;
class RecordSaver;

/// The record that is open: its transcript and what was made of it. Main thread.
class OpenRecord : public RecordWork
{
    Q_OBJECT
    Q_PROPERTY(QString recordId READ recordId NOTIFY recordIdChanged)
    Q_PROPERTY(bool isLoaded READ isLoaded NOTIFY changed)
    Q_PROPERTY(QString title READ title NOTIFY changed)
    Q_PROPERTY(QString detail READ detail NOTIFY changed)
    Q_PROPERTY(QString text READ text NOTIFY changed)
    Q_PROPERTY(QString corrected READ corrected NOTIFY changed)
    Q_PROPERTY(QString summary READ summary NOTIFY changed)
    Q_PROPERTY(QString summaryHtml READ summaryHtml NOTIFY changed)
    Q_PROPERTY(bool hasAudio READ hasAudio NOTIFY audioChanged)
    Q_PROPERTY(QUrl audioUrl READ audioUrl NOTIFY audioChanged)
    Q_PROPERTY(bool hasSpeakers READ hasSpeakers NOTIFY changed)
    Q_PROPERTY(QAbstractItemModel *segments READ segments CONSTANT)
    Q_PROPERTY(QAbstractItemModel *differences READ differences CONSTANT)
    Q_PROPERTY(QAbstractItemModel *questions READ questions CONSTANT)
    Q_PROPERTY(QAbstractItemModel *log READ log CONSTANT)
    Q_PROPERTY(bool asText READ asText WRITE setAsText NOTIFY asTextChanged)
    Q_PROPERTY(QString findText READ findText WRITE setFindText NOTIFY findChanged)
    Q_PROPERTY(QString hitText READ hitText NOTIFY findChanged)

public:
    /// They outlive this.
    struct Collaborators
    {
        HistoryStore &history;
        RecordSaver &saver;
        Notices &notices;
        QString recordingsFolder;
        RecordWork::Collaborators work;
    };

    explicit OpenRecord(Collaborators collaborators, QObject *parent = nullptr);
    ~OpenRecord() override;

    /// With the words marked; none is open with a null id.
    void open(const QUuid &id, const QString &words);

    [[nodiscard]] QString recordId() const { return record().isNull() ? QString() : record().toString(); }
    [[nodiscard]] bool isLoaded() const { return m_isLoaded; }
    [[nodiscard]] QString title() const { return m_record.title; }
    [[nodiscard]] QString detail() const;
    [[nodiscard]] QString text() const { return m_record.text; }
    [[nodiscard]] QString corrected() const { return m_record.corrected.value_or(QString()); }
    [[nodiscard]] QString summary() const { return m_record.summary.value_or(QString()); }
    [[nodiscard]] QString summaryHtml() const;
    [[nodiscard]] bool hasAudio() const { return !m_audio.isEmpty(); }
    [[nodiscard]] QUrl audioUrl() const { return m_audio; }
    [[nodiscard]] bool hasSpeakers() const { return m_segments.hasSpeakers(); }
    [[nodiscard]] SegmentList *segments() { return &m_segments; }
    [[nodiscard]] RowModel *differences() { return &m_differences; }
    [[nodiscard]] RowModel *questions() { return &m_questions; }
    [[nodiscard]] RowModel *log() { return &m_log; }
    [[nodiscard]] bool asText() const { return m_asText; }
    void setAsText(bool asText);
    [[nodiscard]] QString findText() const { return m_findText; }
    void setFindText(const QString &words);
    [[nodiscard]] QString hitText() const;

    /// The interface language is another.
    void relabel();

    /// The row of the next hit (1), the one before (−1) or the first (0); −1 without any.
    Q_INVOKABLE int nextHit(int step);
    [[nodiscard]] Q_INVOKABLE int segmentAt(int milliseconds) const { return m_segments.at(milliseconds); }
    [[nodiscard]] Q_INVOKABLE QString timeText(int milliseconds) const;
    [[nodiscard]] Q_INVOKABLE QString speakerName(int number) const { return m_segments.speakerName(number); }
    Q_INVOKABLE void renameSpeaker(int number, const QString &name);
    Q_INVOKABLE void copyText();
    Q_INVOKABLE void copyMarkdown();
    Q_INVOKABLE void copyCorrected();
    Q_INVOKABLE void copySummary();
    /// As "txt", "md" or "srt".
    Q_INVOKABLE void save(const QString &format);
    Q_INVOKABLE void saveSummary();

Q_SIGNALS:
    void recordIdChanged();
    void changed();
    void audioChanged();
    void asTextChanged();
    void findChanged();
    /// There is no such record any more; the reason is empty when it was deleted.
    void gone(const QString &reason);
    /// The words that the record was opened with stand in that row first.
    void foundAt(int row);

private:
    QCoro::Task<> load();
    void show(const TranscriptRecord &record);
    void showEvents();
    QCoro::Task<> findAudio();
    QCoro::Task<> compare();
    void setAudio(const QUrl &audio);
    void copy(const QString &text);

    HistoryStore &m_history;
    RecordSaver &m_saver;
    Notices &m_notices;
    const QString m_recordingsFolder;
    TranscriptRecord m_record;
    bool m_isLoaded = false;
    QUrl m_audio;
    SegmentList m_segments;
    RowModel m_differences;
    RowModel m_questions;
    RowModel m_log;
    bool m_asText = false;
    QString m_findText;
    int m_hit = -1;
    int m_comparison = 0;
    Scope m_scope;
};

} // namespace orvane

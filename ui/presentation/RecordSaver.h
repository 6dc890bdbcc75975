#pragma once

#include "base/Scope.h"
#include "history/TranscriptExporter.h"

#include <QByteArray>
#include <QList>
#include <QObject>
#include <QString>
#include <QUuid>

#include <QCoroTask>

namespace orvane {

class FileChooser;
class HistoryStore;
class Notices;

/// Saves transcripts as files where the user says, and says how that went. Main thread.
class RecordSaver : public QObject
{
    Q_OBJECT

public:
    /// They outlive this.
    RecordSaver(HistoryStore &history, FileChooser &files, Notices &notices, QObject *parent = nullptr);
    ~RecordSaver() override;

    /// As "txt", "md" or "srt"; several go into one folder.
    void save(const QList<QUuid> &records, const QString &format);
    /// A text of which the user decides where it goes, such as a protocol. The name is without ending.
    void saveText(const QString &text, const QString &name, const QString &ending);

private:
    QCoro::Task<> saveRecord(QUuid id, TranscriptExporter::Format format);
    QCoro::Task<> saveRecords(QList<QUuid> ids, TranscriptExporter::Format format);
    QCoro::Task<> saveContent(QByteArray content, QString name);
    /// Ends with the sentence that says how it went.
    QCoro::Task<> follow(QCoro::Task<> work);
    QCoro::Task<> write(QString path, QByteArray content);

    HistoryStore &m_history;
    FileChooser &m_files;
    Notices &m_notices;
    Scope m_scope;
};

} // namespace orvane

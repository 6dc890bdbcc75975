#include "ui/presentation/RecordSaver.h"

#include "base/Async.h"
#include "base/files/FileReplacement.h"
#include "base/localization/Localization.h"
#include "history/HistoryStore.h"
#include "ui/presentation/FileChooser.h"
#include "ui/presentation/Notices.h"

#include <QFileInfo>

using namespace Qt::StringLiterals;

namespace orvane {

namespace {

using Format = TranscriptExporter::Format;

Format formatOf(const QString &word)
{
    if (word == "md"_L1)
        return Format::Markdown;
    return word == "srt"_L1 ? Format::SubRip : Format::PlainText;
}

/// Of a file that is not there yet: "Name.txt", "Name 2.txt", …
QString freePath(const QString &folder, const QString &name, const QString &ending)
{
    QString path = folder + u'/' + name + ending;
    for (int number = 2; QFileInfo::exists(path); ++number)
        path = u"%1/%2 %3%4"_s.arg(folder, name).arg(number).arg(ending);
    return path;
}

} // namespace

RecordSaver::RecordSaver(HistoryStore &history, FileChooser &files, Notices &notices, QObject *parent)
    : QObject(parent),
      m_history(history),
      m_files(files),
      m_notices(notices)
{}

RecordSaver::~RecordSaver()
{
    m_scope.end();
}

void RecordSaver::save(const QList<QUuid> &records, const QString &format)
{
    if (records.size() == 1)
        spawn(follow(saveRecord(records.constFirst(), formatOf(format))));
    else if (!records.isEmpty())
        spawn(follow(saveRecords(records, formatOf(format))));
}

void RecordSaver::saveText(const QString &text, const QString &name, const QString &ending)
{
    spawn(follow(saveContent(text.toUtf8(), fileNameFor(name) + ending)));
}

QCoro::Task<> RecordSaver::follow(QCoro::Task<> work)
{
    QString failure;
    try {
        co_await m_scope(std::move(work));
    } catch (const Cancelled &) {
        throw;
    } catch (const std::exception &error) {
        failure = descriptionOf(error);
    }
    if (!failure.isEmpty())
        m_notices.show(failure);
}

QCoro::Task<> RecordSaver::saveRecord(QUuid id, Format format)
{
    const TranscriptRecord record = co_await m_scope(m_history.record(id));
    co_await m_scope(saveContent(TranscriptExporter::exported(format, record),
                                 fileNameFor(record.title) + TranscriptExporter::extension(format)));
}

QCoro::Task<> RecordSaver::saveContent(QByteArray content, QString name)
{
    const QString path = co_await m_scope(m_files.target(name));
    if (path.isEmpty())
        co_return;
    co_await m_scope(write(path, content));
    m_notices.show(Localization::text(u"Сохранено: ") + path);
}

QCoro::Task<> RecordSaver::saveRecords(QList<QUuid> ids, Format format)
{
    const QString folder = co_await m_scope(m_files.folder());
    if (folder.isEmpty())
        co_return;
    for (const QUuid &id : ids) {
        const TranscriptRecord record = co_await m_scope(m_history.record(id));
        const QString path =
            freePath(folder, fileNameFor(record.title), TranscriptExporter::extension(format));
        co_await m_scope(write(path, TranscriptExporter::exported(format, record)));
    }
    m_notices.show(Localization::text(u"Сохранено: ") + folder);
}

QCoro::Task<> RecordSaver::write(QString path, QByteArray content)
{
    const auto work = [path, content] { replaceFile(path, content, FileAccess::Usual); };
    co_await m_scope(offMainThread(work));
}

} // namespace orvane

#include "ui/presentation/OpenRecord.h"

#include "base/Async.h"
#include "base/localization/Localization.h"
#include "history/HistoryStore.h"
#include "models/WhisperModel.h"
#include "settings/TranscriptionLanguage.h"
#include "ui/presentation/Differences.h"
#include "ui/presentation/Markdown.h"
#include "ui/presentation/Notices.h"
#include "ui/presentation/RecordSaver.h"
#include "ui/presentation/Spans.h"

#include <QClipboard>
#include <QGuiApplication>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace orvane {

namespace {

QString modelName(const QString &id)
{
    const auto model = std::ranges::find(WhisperModel::catalog(), id, &WhisperModel::id);
    return model == WhisperModel::catalog().end() ? id : model->displayName;
}

} // namespace

OpenRecord::OpenRecord(Collaborators collaborators, QObject *parent)
    : RecordWork(collaborators.work, parent),
      m_history(collaborators.history),
      m_saver(collaborators.saver),
      m_notices(collaborators.notices),
      m_recordingsFolder(std::move(collaborators.recordingsFolder)),
      m_differences({"key", "before", "after"}),
      m_questions({"key", "question", "answer", "time"}),
      m_log({"key", "time", "what", "text"})
{
    connect(&m_history, &HistoryStore::recordChanged, this, [this](const QUuid &id) {
        if (id == record())
            spawn(load());
    });
    connect(&m_history, &HistoryStore::recordsChanged, this, [this] {
        const auto isThis = [this](const RecordSummary &summary) { return summary.id == record(); };
        if (m_isLoaded && m_history.isLoaded() && std::ranges::none_of(m_history.records(), isThis))
            Q_EMIT gone({});
    });
}

OpenRecord::~OpenRecord()
{
    m_scope.end();
}

void OpenRecord::open(const QUuid &id, const QString &words)
{
    if (record() != id) {
        m_isLoaded = false;
        show({});
        setAudio({});
        setRecord(id);
        if (!id.isNull())
            spawn(load());
        Q_EMIT recordIdChanged();
    }
    setFindText(words);
}

QCoro::Task<> OpenRecord::load()
{
    const QUuid id = record();
    std::optional<TranscriptRecord> loaded;
    QString failure;
    try {
        loaded = co_await m_scope(m_history.record(id));
    } catch (const Cancelled &) {
        throw;
    } catch (const std::exception &error) {
        failure = descriptionOf(error);
    }
    if (id != record())
        co_return;
    if (!loaded) {
        Q_EMIT gone(failure);
        co_return;
    }
    const bool isNew = !std::exchange(m_isLoaded, true);
    show(*loaded);
    if (const int row = isNew ? nextHit(0) : -1; row >= 0)
        Q_EMIT foundAt(row);
}

void OpenRecord::show(const TranscriptRecord &record)
{
    const bool hasOtherTexts = record.corrected != m_record.corrected || record.text != m_record.text;
    m_record = record;
    m_segments.setSegments(m_record.segments, m_record.speakerNames);
    showEvents();
    Q_EMIT changed();
    Q_EMIT findChanged();
    if (hasOtherTexts) {
        m_differences.setRows({});
        spawn(compare());
    }
    if (m_isLoaded)
        spawn(findAudio());
}

void OpenRecord::showEvents()
{
    QList<QVariantMap> questions;
    QList<QVariantMap> log;
    for (const RecordEvent &event : m_record.events.value_or(QList<RecordEvent>())) {
        const QString key = event.id.toString();
        const QString time = Spans::moment(event.ts);
        log.append({{u"key"_s, key},
                    {u"time"_s, time},
                    {u"what"_s, orvane::title(event.kind)},
                    {u"text"_s, event.text}});
        if (event.prompt)
            questions.append({{u"key"_s, key},
                              {u"question"_s, *event.prompt},
                              {u"answer"_s, htmlOfMarkdown(event.text)},
                              {u"time"_s, time}});
    }
    m_questions.setRows(questions);
    m_log.setRows(log);
}

QCoro::Task<> OpenRecord::findAudio()
{
    const auto find = [record = m_record, folder = m_recordingsFolder] { return record.playableURL(folder); };
    const QUuid id = record();
    const std::optional<QUrl> audio = co_await m_scope(offMainThread(find));
    if (id == record())
        setAudio(audio.value_or(QUrl()));
}

void OpenRecord::setAudio(const QUrl &audio)
{
    if (m_audio == audio)
        return;
    m_audio = audio;
    Q_EMIT audioChanged();
}

QCoro::Task<> OpenRecord::compare()
{
    const auto compare = [before = m_record.text, after = corrected()] {
        return after.isEmpty() ? QList<Difference>() : differencesOf(before, after);
    };
    const int comparison = ++m_comparison;
    const QList<Difference> differences = co_await m_scope(offMainThread(compare));
    if (comparison != m_comparison)
        co_return;
    QList<QVariantMap> rows;
    for (const Difference &difference : differences)
        rows.append(
            {{u"key"_s, rows.size()}, {u"before"_s, difference.before}, {u"after"_s, difference.after}});
    m_differences.setRows(rows);
}

QString OpenRecord::detail() const
{
    if (!m_isLoaded)
        return {};
    return Spans::joined({Spans::moment(m_record.createdAt), Spans::clock(m_record.durationMs),
                          modelName(m_record.modelID),
                          TranscriptionLanguage::withCode(m_record.languageCode).displayName()});
}

QString OpenRecord::summaryHtml() const
{
    return htmlOfMarkdown(summary());
}

void OpenRecord::relabel()
{
    showEvents();
    m_segments.relabel();
    Q_EMIT changed();
    Q_EMIT findChanged();
}

void OpenRecord::setAsText(bool asText)
{
    if (std::exchange(m_asText, asText) != asText)
        Q_EMIT asTextChanged();
}

void OpenRecord::setFindText(const QString &words)
{
    if (m_findText == words)
        return;
    m_findText = words;
    m_hit = -1;
    m_segments.find(words);
    Q_EMIT findChanged();
}

QString OpenRecord::hitText() const
{
    if (m_findText.trimmed().isEmpty())
        return {};
    const qsizetype count = m_segments.hits().size();
    return count == 0 ? Localization::text(u"Не найдено")
                      : Localization::text(u"%1 из %2").arg(std::max(m_hit, 0) + 1).arg(count);
}

int OpenRecord::nextHit(int step)
{
    const int count = int(m_segments.hits().size());
    if (count == 0)
        return -1;
    m_hit = m_hit < 0 ? 0 : (m_hit + step + count) % count;
    Q_EMIT findChanged();
    return m_segments.hits().at(m_hit);
}

QString OpenRecord::timeText(int milliseconds) const
{
    return Spans::clock(milliseconds);
}

void OpenRecord::renameSpeaker(int number, const QString &name)
{
    m_history.renameSpeaker(record(), number, name);
}

void OpenRecord::copy(const QString &text)
{
    QGuiApplication::clipboard()->setText(text);
    m_notices.show(Localization::text(u"Скопировано"));
}

void OpenRecord::copyText()
{
    copy(m_record.text.trimmed());
}

void OpenRecord::copyMarkdown()
{
    copy(QString::fromUtf8(TranscriptExporter::exported(TranscriptExporter::Format::Markdown, m_record)));
}

void OpenRecord::copyCorrected()
{
    copy(corrected());
}

void OpenRecord::copySummary()
{
    copy(summary());
}

void OpenRecord::save(const QString &format)
{
    m_saver.save({record()}, format);
}

void OpenRecord::saveSummary()
{
    m_saver.saveText(summary(), Localization::text(u"Протокол") + u" — "_s + title(), u".md"_s);
}

} // namespace orvane

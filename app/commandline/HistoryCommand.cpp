#include "app/commandline/HistoryCommand.h"

#include "app/commandline/ExitStatus.h"
#include "app/commandline/Output.h"
#include "app/settings/Localization.h"

using namespace Qt::StringLiterals;

namespace orvane {

namespace {

QString shownTime(const QDateTime &moment)
{
    return moment.toLocalTime().toString(u"yyyy-MM-dd HH:mm"_s);
}

} // namespace

HistoryCommand::HistoryCommand(HistoryStore &history, Options options)
    : m_history(history),
      m_options(std::move(options))
{}

QCoro::Task<int> HistoryCommand::run()
{
    co_await m_history.whenLoaded();
    if (m_options.action == Action::List) {
        list();
        co_return ExitStatus::success;
    }

    const TranscriptRecord chosen = record();
    switch (m_options.action) {
    case Action::List:
        Q_UNREACHABLE();
    case Action::Show:
        show(chosen);
        break;
    case Action::Export:
        Output::write(rendered(chosen, m_options.format), m_options.output);
        break;
    case Action::Rename:
        m_history.rename(chosen.id, m_options.title);
        break;
    case Action::Remove:
        m_history.remove(chosen.id);
        break;
    }
    co_await m_history.flush();
    if (const QString error = m_history.lastError(); !error.isEmpty())
        throw Error(error);
    co_return ExitStatus::success;
}

void HistoryCommand::list() const
{
    QString lines;
    for (const TranscriptRecord &record : m_history.records()) {
        lines += u"%1  %2  %3  %4  %5\n"_s.arg(uuidText(record.id), shownTime(record.createdAt),
                                               title(record.kind).leftJustified(9),
                                               timecodeOf(record.durationMs).rightJustified(8), record.title);
    }
    Output::write(lines.toUtf8());
}

void HistoryCommand::show(const TranscriptRecord &record) const
{
    QString text = record.title + u'\n';
    text +=
        u"%1 · %2 · %3 · %4 · %5\n"_s.arg(title(record.kind), shownTime(record.createdAt),
                                          timecodeOf(record.durationMs), record.modelID, record.languageCode);
    if (record.sourceFilePath)
        text += *record.sourceFilePath + u'\n';
    text += u'\n';
    for (const TranscriptRecord::Segment &segment : record.segments)
        text += timecodeOf(segment.start).rightJustified(8) + u"  "_s + segment.text.trimmed() + u'\n';
    if (record.segments.isEmpty())
        text += record.text.trimmed() + u'\n';
    Output::write(text.toUtf8());
}

TranscriptRecord HistoryCommand::record() const
{
    const TranscriptRecord *found = nullptr;
    for (const TranscriptRecord &record : m_history.records()) {
        if (!uuidText(record.id).startsWith(m_options.id, Qt::CaseInsensitive))
            continue;
        if (found && found->id != record.id)
            throw Error(Localization::text(u"Под это обозначение подходит несколько записей: "_s) +
                        m_options.id);
        if (!found)
            found = &record;
    }
    if (!found)
        throw Error(Localization::text(u"В истории нет записи "_s) + m_options.id);
    return *found;
}

} // namespace orvane

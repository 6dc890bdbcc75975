#include "app/commandline/HistoryCommand.h"

#include "app/commandline/ExitStatus.h"
#include "app/commandline/HistoryAccess.h"
#include "app/commandline/Output.h"
#include "app/commandline/RecordText.h"

using namespace Qt::StringLiterals;

namespace orvane {

HistoryCommand::HistoryCommand(HistoryStore &history, Options options)
    : m_history(history),
      m_options(std::move(options))
{}

QCoro::Task<int> HistoryCommand::run()
{
    if (m_options.action == Action::List) {
        co_await m_history.whenLoaded();
        list();
        co_return ExitStatus::success;
    }

    const TranscriptRecord chosen = co_await HistoryAccess::recordNamed(&m_history, m_options.id);
    switch (m_options.action) {
    case Action::List:
        Q_UNREACHABLE();
    case Action::Show:
        Output::write(readable(chosen).toUtf8());
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
    co_await HistoryAccess::untilSaved(&m_history);
    if (m_options.action == Action::Remove)
        co_await m_history.eraseDeleted();
    co_return ExitStatus::success;
}

void HistoryCommand::list() const
{
    QString lines;
    for (const RecordSummary &record : m_history.records()) {
        lines += u"%1  %2  %3  %4  %5\n"_s.arg(uuidText(record.id), shownTime(record.createdAt),
                                               title(record.kind).leftJustified(9),
                                               timecodeOf(record.durationMs).rightJustified(8), record.title);
    }
    Output::write(lines.toUtf8());
}

} // namespace orvane

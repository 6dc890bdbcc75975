#pragma once

#include "app/commandline/OutputFormat.h"
#include "history/HistoryStore.h"

#include <QString>

#include <QCoroTask>

namespace orvane {

/// `orvane history`: what the windows do with the list of transcripts, for scripts.
class HistoryCommand
{
public:
    enum class Action { List, Show, Export, Rename, Remove };

    struct Options
    {
        Action action = Action::List;
        /// A record's id, or the first characters of only one; for all actions but List.
        QString id;
        QString title;
        OutputFormat format = OutputFormat::Text;
        QString output;
    };

    HistoryCommand(HistoryStore &history, Options options);

    /// Returns the exit status, with every change on disk. Throws Error.
    QCoro::Task<int> run();

private:
    void list() const;

    HistoryStore &m_history;
    const Options m_options;
};

} // namespace orvane

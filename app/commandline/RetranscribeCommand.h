#pragma once

#include <QString>

#include <QCoroTask>

namespace orvane {

class AppServices;

/// `orvane history retranscribe`: transcribes the audio of a record anew and writes out the new text.
class RetranscribeCommand
{
public:
    struct Options
    {
        /// A record's id, or the first characters of only one.
        QString id;
        /// Id of a catalogue model or path of a file; empty for the user's choice.
        QString model;
        /// Empty for the user's choice.
        QString language;
    };

    RetranscribeCommand(AppServices &services, Options options);

    /// Returns the exit status, with the engine ended and the history written. Throws Error.
    QCoro::Task<int> run();

    /// Ends run() as soon as possible; the record stays as it was.
    void interrupt();

private:
    AppServices &m_services;
    const Options m_options;
    bool m_interrupted = false;
};

} // namespace orvane

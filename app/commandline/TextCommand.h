#pragma once

#include <QString>
#include <QUuid>

#include <QCoroTask>

#include <stop_token>

namespace orvane {

class AppServices;

/// `orvane correct`, `email`, `prompt`, `ask` and `protocol`: has a language model work on a text. With a
/// record of the history it works on that record's text, and what comes of correct, ask and protocol is also
/// stored in the record.
class TextCommand
{
public:
    enum class Action { Correct, Email, Prompt, Ask, Protocol };

    struct Options
    {
        Action action = Action::Correct;
        /// For Ask.
        QString question;
        /// A file or "-" for standard input; not used with a record.
        QString input;
        /// A record's id, or the first characters of only one; empty for none.
        QString record;
        /// Id of a catalogue model or path of a file; empty for the user's choice.
        QString model;
        /// A file or "-".
        QString output;
    };

    /// Throws UsageError when the options do not fit together.
    TextCommand(AppServices &services, Options options);

    /// Returns the exit status, with the engine ended and the history written. Throws Error.
    QCoro::Task<int> run();

    /// Ends run() as soon as possible, with nothing stored.
    void interrupt();

private:
    QCoro::Task<QString> result();
    QCoro::Task<QString> process(QString text);
    QCoro::Task<QString> processRecord(QUuid id);
    void requireModel() const;

    AppServices &m_services;
    const Options m_options;
    /// Path of the model that the options name; empty for the user's choice.
    QString m_modelFile;
    std::stop_source m_stop;
};

} // namespace orvane

#pragma once

#include "app/commandline/OutputFormat.h"
#include "models/ModelFile.h"
#include "recognition/TranscriptionService.h"

#include <QStringList>

#include <QCoroTask>

#include <stop_token>

namespace orvane {

class AppServices;

/// `orvane transcribe`: transcribes files one after the other and writes each result as soon as it is
/// there. A file that fails is reported and the next one goes on.
class TranscribeCommand
{
public:
    struct Options
    {
        /// "-" is standard input.
        QStringList files;
        /// Id of a catalogue model or path of a file; empty for the user's choice.
        QString model;
        /// Empty for the user's choice.
        QString language;
        /// On also when the user chose so.
        TranscriptionService::SpeakerDetection speakers = TranscriptionService::SpeakerDetection::Off;
        OutputFormat format = OutputFormat::Text;
        /// A file, a folder or "-"; with several files a folder or "-".
        QString output;
        TranscriptionService::History history = TranscriptionService::History::Save;
    };

    /// Throws UsageError when the options do not fit together.
    TranscribeCommand(AppServices &services, Options options);

    /// Returns the exit status, with the engine ended and the history written. Throws Error when
    /// nothing could be begun.
    QCoro::Task<int> run();

    /// Ends run() as soon as possible, without the rest of the results.
    void interrupt();

private:
    [[nodiscard]] QString languageOfFiles() const;
    QCoro::Task<bool> transcribe(QString file, TranscriptionService::Request request);
    /// Keeps standard input in a file.
    QCoro::Task<> receive(QString path);
    /// The stored record when there is one, else one made for the occasion.
    [[nodiscard]] QCoro::Task<TranscriptRecord> recordOf(TranscriptionService::Request request,
                                                         TranscriptionService::Result result);
    void writeResult(const QString &file, const TranscriptRecord &record) const;
    [[nodiscard]] QString destination(const QString &file) const;

    AppServices &m_services;
    const Options m_options;
    std::stop_source m_stop;
};

} // namespace orvane

#include "app/commandline/RetranscribeCommand.h"

#include "app/commandline/ExitStatus.h"
#include "app/commandline/HistoryAccess.h"
#include "app/commandline/ModelChoice.h"
#include "app/commandline/Output.h"
#include "app/commandline/OutputFormat.h"
#include "app/commandline/ProgressLine.h"
#include "app/services/AppServices.h"
#include "base/localization/Localization.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace orvane {

namespace {

bool hasSpeakers(const TranscriptRecord &record)
{
    return std::ranges::any_of(record.segments, [](const TranscriptRecord::Segment &segment) {
        return segment.speaker.has_value();
    });
}

} // namespace

RetranscribeCommand::RetranscribeCommand(AppServices &services, Options options)
    : m_services(services),
      m_options(std::move(options))
{}

QCoro::Task<int> RetranscribeCommand::run()
{
    RecordProcessor::Recognition recognition;
    recognition.model = ModelChoice::recognitionModel(m_services, m_options.model);
    recognition.language =
        m_options.language.isEmpty() ? m_services.settings().language().code : m_options.language;
    HistoryStore &history = m_services.history();
    const TranscriptRecord record = co_await HistoryAccess::recordNamed(&history, m_options.id);
    if (hasSpeakers(record))
        recognition.speakers = TranscriptionService::SpeakerDetection::On;
    if (m_interrupted)
        co_return ExitStatus::failure;

    RecordProcessor &processor = m_services.recordProcessor();
    QString text;
    std::exception_ptr failure;
    try {
        const ProgressLine progress(record.title, [] {
            return ProgressLine::State{.stage = Localization::text(u"Распознавание речи")};
        });
        text = co_await processor.transcribeAnew(record.id, recognition);
    } catch (...) {
        failure = std::current_exception();
    }
    co_await m_services.whisperEngine().stopAndWait();
    if (m_interrupted)
        co_return ExitStatus::failure;
    if (failure)
        std::rethrow_exception(failure);
    if (const QString damage = processor.error(); !damage.isEmpty())
        Output::complain(u"%1: %2"_s.arg(record.title, damage));
    if (text.trimmed().isEmpty())
        Output::complain(u"%1: %2"_s.arg(record.title, Localization::text(u"речь не найдена")));
    const TranscriptRecord stored = co_await history.record(record.id);
    Output::write(rendered(stored, OutputFormat::Text), Output::standardOutput.toString());
    co_await HistoryAccess::untilSaved(&history); // last, so that a full disk costs nobody the text
    co_return ExitStatus::success;
}

void RetranscribeCommand::interrupt()
{
    m_interrupted = true;
    m_services.recordProcessor().cancel();
    m_services.whisperEngine().stop(); // what waits for it ends with it
}

} // namespace orvane

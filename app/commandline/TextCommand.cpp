#include "app/commandline/TextCommand.h"

#include "app/commandline/ExitStatus.h"
#include "app/commandline/HistoryAccess.h"
#include "app/commandline/InputStream.h"
#include "app/commandline/ModelChoice.h"
#include "app/commandline/Output.h"
#include "app/commandline/ProgressLine.h"
#include "app/commandline/TextInput.h"
#include "app/services/AppServices.h"
#include "base/localization/Localization.h"

#include <QFileInfo>

using namespace Qt::StringLiterals;

namespace orvane {

namespace {

/// How far the service is, for the terminal.
std::function<ProgressLine::State()> stateOf(const TextCorrectionService &corrector)
{
    return [&corrector] {
        const double done = corrector.progress();
        const QString stage = Localization::text(u"Обработка текста");
        if (done <= 0)
            return ProgressLine::State{.stage = stage};
        return ProgressLine::State{.stage = u"%1 · %2 %"_s.arg(stage).arg(100 * done, 0, 'f', 0),
                                   .remainingMs = corrector.remainingMs()};
    };
}

} // namespace

TextCommand::TextCommand(AppServices &services, Options options)
    : m_services(services),
      m_options(std::move(options))
{
    if (m_options.output == Output::standardOutput)
        return;
    const QFileInfo output(m_options.output);
    if (output.isDir())
        throw UsageError(
            Localization::text(u"Для этой команды --output должен указывать файл, а не папку: ") +
            m_options.output);
    const bool isItsOwnResult = m_options.record.isEmpty() && output.isFile() &&
                                m_options.input != InputStream::standardInput &&
                                QFileInfo(m_options.input) == output;
    if (isItsOwnResult)
        throw UsageError(
            Localization::text(u"Результат перезаписал бы исходный файл: укажите для --output другой путь."));
}

QCoro::Task<int> TextCommand::run()
{
    Output::requireWritable(m_options.output);
    m_modelFile = ModelChoice::languageModelPath(m_services, m_options.model);
    requireModel();
    QString text;
    std::exception_ptr failure;
    try {
        text = co_await result();
    } catch (...) {
        failure = std::current_exception();
    }
    co_await m_services.corrector().local().stopAndWait();
    if (m_stop.stop_requested())
        co_return ExitStatus::failure;
    if (failure)
        std::rethrow_exception(failure);
    Output::write(text.toUtf8(), m_options.output);
    // Last, so that a full disk does not cost the user what took minutes.
    co_await HistoryAccess::untilSaved(&m_services.history());
    co_return ExitStatus::success;
}

QCoro::Task<QString> TextCommand::result()
{
    const std::stop_token stop = m_stop.get_token();
    const bool hasRecord = !m_options.record.isEmpty();
    TranscriptRecord record;
    if (hasRecord) {
        record = co_await HistoryAccess::recordNamed(&m_services.history(), m_options.record);
        if (record.text.trimmed().isEmpty())
            throw Error(Localization::text(u"В записи нет текста."));
    } else {
        record.title = InputStream::title(m_options.input);
        record.text = co_await TextInput::read(m_options.input, stop);
    }
    throwIfCancelled(stop);

    const bool isStored =
        hasRecord && m_options.action != Action::Email && m_options.action != Action::Prompt;
    const ProgressLine progress(record.title, stateOf(m_services.corrector()));
    if (isStored)
        co_return co_await processRecord(record.id);
    co_return co_await process(record.text);
}

QCoro::Task<QString> TextCommand::process(QString text)
{
    TextCorrectionService &corrector = m_services.corrector();
    const std::stop_token stop = m_stop.get_token();
    switch (m_options.action) {
    case Action::Correct:
        return corrector.correct(text, stop, m_modelFile);
    case Action::Email:
        return corrector.processDictation(text, DictationMode::Email, stop, m_modelFile);
    case Action::Prompt:
        return corrector.processDictation(text, DictationMode::Prompt, stop, m_modelFile);
    case Action::Ask:
        return corrector.process(text, m_options.question, stop, m_modelFile);
    case Action::Protocol:
        return corrector.summarize(text, stop, m_modelFile);
    }
    Q_UNREACHABLE();
}

QCoro::Task<QString> TextCommand::processRecord(QUuid id)
{
    RecordProcessor &processor = m_services.recordProcessor();
    if (m_options.action == Action::Correct)
        return processor.correct(id, m_modelFile);
    if (m_options.action == Action::Protocol)
        return processor.summarize(id, m_modelFile);
    return processor.ask(id, m_options.question, m_modelFile);
}

void TextCommand::requireModel() const
{
    TextCorrectionService &corrector = m_services.corrector();
    if (corrector.status(m_modelFile).isReady || !m_services.settings().textCorrectionEnabled())
        return; // the service itself says that it is turned off
    if (corrector.local().findBinary().isEmpty())
        throw Error(corrector.localAvailability().message);
    throw Error(Localization::text(u"Не скачано ни одной языковой модели. Скачайте её (orvane models "
                                   u"download ИМЯ) или укажите файл: --model ПУТЬ"));
}

void TextCommand::interrupt()
{
    m_stop.request_stop();
    m_services.recordProcessor().cancel();
}

} // namespace orvane

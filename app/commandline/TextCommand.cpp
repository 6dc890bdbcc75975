#include "app/commandline/TextCommand.h"

#include "app/commandline/ExitStatus.h"
#include "app/commandline/HistoryAccess.h"
#include "app/commandline/ModelChoice.h"
#include "app/commandline/Output.h"
#include "app/commandline/ProgressLine.h"
#include "app/commandline/TextInput.h"
#include "app/services/AppServices.h"
#include "base/localization/Localization.h"

#include <QElapsedTimer>
#include <QFileInfo>

using namespace Qt::StringLiterals;

namespace orvane {

namespace {

using Text = std::optional<QString>;

/// How far the service is, for the terminal.
std::function<ProgressLine::State()> stateOf(const TextCorrectionService &corrector)
{
    QElapsedTimer time;
    time.start();
    return [&corrector, time] {
        const double done = corrector.progress();
        const QString stage = Localization::text(u"Обработка текста");
        if (done <= 0)
            return ProgressLine::State{.stage = stage};
        return ProgressLine::State{.stage = u"%1 · %2 %"_s.arg(stage).arg(100 * done, 0, 'f', 0),
                                   .remainingMs = qint64(double(time.elapsed()) * (1 - done) / done)};
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
                                m_options.input != TextInput::standardInput &&
                                QFileInfo(m_options.input) == output;
    if (isItsOwnResult)
        throw UsageError(
            Localization::text(u"Результат перезаписал бы исходный файл: укажите для --output другой путь."));
}

QCoro::Task<int> TextCommand::run()
{
    Output::requireWritable(m_options.output);
    m_services.corrector().useModelFile(ModelChoice::languageModelPath(m_services, m_options.model));
    requireModel();
    QString text;
    try {
        text = co_await result();
    } catch (const Cancelled &) {
        co_return ExitStatus::failure;
    }
    Output::write(text.toUtf8() + (text.endsWith(u'\n') ? "" : "\n"), m_options.output);
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
        co_await m_services.history().whenLoaded();
        record = HistoryAccess::recordNamed(m_services.history(), m_options.record);
    } else {
        record.title = TextInput::title(m_options.input);
        record.text = co_await TextInput::read(m_options.input, stop);
    }
    throwIfCancelled(stop);

    const bool isStored =
        hasRecord && m_options.action != Action::Email && m_options.action != Action::Prompt;
    Outcome outcome;
    {
        const ProgressLine progress(record.title, stateOf(m_services.corrector()));
        if (isStored)
            outcome = co_await processRecord(record.id);
        else
            outcome = co_await process(record.text);
    }
    co_await m_services.corrector().local().stopAndWait();
    throwIfCancelled(stop);
    if (!outcome.text || outcome.text->trimmed().isEmpty()) {
        throw Error(outcome.error.isEmpty() ? Localization::text(u"Модель ничего не ответила.")
                                            : outcome.error);
    }
    co_return *outcome.text;
}

QCoro::Task<TextCommand::Outcome> TextCommand::process(QString text)
{
    TextCorrectionService &corrector = m_services.corrector();
    Text result;
    switch (m_options.action) {
    case Action::Correct:
        result = co_await corrector.correct(text);
        break;
    case Action::Email:
        result = co_await corrector.processDictation(text, DictationMode::Email);
        break;
    case Action::Prompt:
        result = co_await corrector.processDictation(text, DictationMode::Prompt);
        break;
    case Action::Ask:
        result = co_await corrector.process(text, m_options.question);
        break;
    case Action::Protocol:
        result = co_await corrector.summarize(text);
        break;
    }
    co_return Outcome{.text = result, .error = corrector.error()};
}

QCoro::Task<TextCommand::Outcome> TextCommand::processRecord(QUuid id)
{
    RecordProcessor &processor = m_services.recordProcessor();
    Text result;
    if (m_options.action == Action::Correct)
        result = co_await processor.correct(id);
    else if (m_options.action == Action::Protocol)
        result = co_await processor.summarize(id);
    else
        result = co_await processor.ask(id, m_options.question);
    co_return Outcome{.text = result, .error = processor.error()};
}

void TextCommand::requireModel() const
{
    TextCorrectionService &corrector = m_services.corrector();
    if (corrector.status().isReady || !m_services.settings().textCorrectionEnabled())
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
    m_services.corrector().cancel();
    m_services.corrector().local().stop(); // what waits for it ends with it
}

} // namespace orvane

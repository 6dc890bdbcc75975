#include "app/commandline/TranscribeCommand.h"

#include "app/commandline/ExitStatus.h"
#include "app/commandline/InputStream.h"
#include "app/commandline/ModelChoice.h"
#include "app/commandline/Output.h"
#include "app/commandline/ProgressLine.h"
#include "app/services/AppServices.h"
#include "base/StandardFolders.h"
#include "base/files/FileError.h"
#include "base/files/PrivateFile.h"
#include "base/files/TemporaryFile.h"
#include "base/localization/Localization.h"
#include "history/FileRecordSaver.h"

#include <QFile>
#include <QFileInfo>
#include <QSet>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace orvane {

namespace {

bool isStandardInput(const QString &file)
{
    return file == InputStream::standardInput;
}

QString shownName(const QString &file)
{
    const QString name = InputStream::title(file);
    return name.isEmpty() ? file : name;
}

bool isFolder(const QString &path)
{
    return QFileInfo(path).isDir();
}

} // namespace

TranscribeCommand::TranscribeCommand(AppServices &services, Options options)
    : m_services(services),
      m_options(std::move(options))
{
    const auto isItsOwnResult = [this](const QString &file) {
        return !isStandardInput(file) && QFileInfo(file).isFile() &&
               QFileInfo(file) == QFileInfo(destination(file));
    };
    if (std::ranges::any_of(m_options.files, isItsOwnResult))
        throw UsageError(
            Localization::text(u"Результат перезаписал бы исходный файл: укажите для --output другой путь."));
    if (m_options.files.size() < 2)
        return;
    if (m_options.output == Output::standardOutput) {
        if (m_options.format == OutputFormat::SubRip)
            throw UsageError(Localization::text(u"Субтитры нескольких файлов не поместятся в один вывод: "
                                                u"укажите папку параметром --output."));
        return;
    }
    if (!isFolder(m_options.output))
        throw UsageError(
            Localization::text(u"Для нескольких файлов --output должен указывать существующую папку."));
    QSet<QString> destinations;
    for (const QString &file : m_options.files)
        destinations.insert(destination(file));
    if (destinations.size() < m_options.files.size())
        throw UsageError(Localization::text(
            u"Результаты файлов с одинаковыми именами перезаписали бы друг друга: обработайте их отдельно."));
}

QCoro::Task<int> TranscribeCommand::run()
{
    const ModelFile chosenModel = ModelChoice::recognitionModel(m_services, m_options.model);
    Output::requireWritable(m_options.output);
    const AppSettings &settings = m_services.settings();
    TranscriptionService::Request request;
    request.model = chosenModel;
    request.language = languageOfFiles();
    request.speakers =
        settings.detectSpeakers() ? TranscriptionService::SpeakerDetection::On : m_options.speakers;
    request.history = m_options.history;

    bool everyFileDone = true;
    for (const QString &file : m_options.files) {
        if (m_stop.stop_requested())
            break;
        const bool done = co_await transcribe(file, request);
        everyFileDone = everyFileDone && done;
    }

    co_await m_services.whisperEngine().stopAndWait();
    if (m_options.history == TranscriptionService::History::Save) {
        co_await m_services.history().flush();
        if (const QString error = m_services.history().lastError(); !error.isEmpty()) {
            Output::complain(error);
            everyFileDone = false;
        }
    }
    co_return everyFileDone ? ExitStatus::success : ExitStatus::failure;
}

QString TranscribeCommand::languageOfFiles() const
{
    if (!m_options.language.isEmpty())
        return m_options.language;
    // Who has chosen no language may have a recording in any.
    const AppSettings &settings = m_services.settings();
    return settings.storedLanguageCode() ? settings.language().code : u"auto"_s;
}

void TranscribeCommand::interrupt()
{
    m_stop.request_stop();
    m_services.transcriber().cancel();
    m_services.whisperEngine().stop(); // what waits for it ends with it
}

QCoro::Task<bool> TranscribeCommand::transcribe(QString file, TranscriptionService::Request request)
{
    TranscriptionService &transcriber = m_services.transcriber();
    const TemporaryFile received(StandardFolders::ofUser().temporary, u"orvane-"_s, u".media"_s);
    request.audioPath = file;
    TranscriptionService::Result result;
    try {
        if (isStandardInput(file)) {
            co_await receive(received.path());
            request.audioPath = received.path();
            request.title = Localization::text(u"Стандартный ввод");
        }
        const ProgressLine progress(shownName(file), [&transcriber] {
            return ProgressLine::State{.stage = transcriber.statusText(),
                                       .remainingMs = transcriber.remainingMs()};
        });
        result = co_await transcriber.transcribe(request);
    } catch (const Cancelled &) {
        co_return false;
    } catch (const Error &error) {
        Output::complain(u"%1: %2"_s.arg(shownName(file), error.description()));
        co_return false;
    }

    if (const QString damage = result.transcript.damageText(); !damage.isEmpty())
        Output::complain(u"%1: %2"_s.arg(shownName(file), damage));
    try {
        writeResult(file, co_await recordOf(request, result));
    } catch (const Error &error) {
        Output::complain(error.description());
        co_return false;
    }
    co_return true;
}

QCoro::Task<> TranscribeCommand::receive(QString path)
{
    InputStream input(InputStream::standardInput.toString());
    QFile file(path);
    if (!file.open(QFile::WriteOnly | QFile::NewOnly, privateFile))
        throw FileError::notWritten(file);
    while (true) {
        const QByteArray piece = co_await input.next(m_stop.get_token());
        if (piece.isEmpty())
            break;
        if (file.write(piece) != piece.size())
            throw FileError::notWritten(file);
    }
    if (!file.flush())
        throw FileError::notWritten(file);
}

QCoro::Task<TranscriptRecord> TranscribeCommand::recordOf(TranscriptionService::Request request,
                                                          TranscriptionService::Result result)
{
    if (result.savedID)
        co_return co_await m_services.history().record(*result.savedID);
    co_return FileTranscript{.path = request.audioPath,
                             .title = request.title,
                             .segments = result.transcript.segments,
                             .text = joinedText(result.transcript.segments),
                             .modelID = request.model.id,
                             .languageCode = request.language,
                             .length = result.transcript.length}
        .record();
}

void TranscribeCommand::writeResult(const QString &file, const TranscriptRecord &record) const
{
    if (record.text.trimmed().isEmpty())
        Output::complain(u"%1: %2"_s.arg(shownName(file), Localization::text(u"речь не найдена")));
    const QString target = destination(file);
    const bool needsHeading = m_options.files.size() > 1 && m_options.format == OutputFormat::Text &&
                              target == Output::standardOutput;
    QByteArray text = rendered(record, m_options.format);
    if (needsHeading)
        text = u"==> %1 <==\n"_s.arg(file).toUtf8() + text + '\n';
    Output::write(text, target);
}

QString TranscribeCommand::destination(const QString &file) const
{
    if (!isFolder(m_options.output))
        return m_options.output;
    const QString name = isStandardInput(file) ? u"stdin"_s : QFileInfo(file).completeBaseName();
    return u"%1/%2%3"_s.arg(m_options.output, name, extension(m_options.format));
}

} // namespace orvane

#include "correction/TextCorrectionService.h"

#include "base/Async.h"
#include "correction/CorrectionPrompts.h"
#include "correction/TextChunks.h"

#include <QElapsedTimer>
#include <QStringList>

#include <algorithm>
#include <chrono>
#include <functional>

using namespace Qt::StringLiterals;

namespace orvane {

namespace {

constexpr qsizetype maxLocalChunk = 1200;
constexpr qsizetype maxBuiltInChunk = 1400;
constexpr qsizetype maxInput = 6000;

constexpr Localization::Text unavailableModel = u"Модель недоступна.";
const QString processingFailed = u"Ошибка обработки: "_s;

/// What fails in a model is shown with what it was to do.
template <typename Result>
QCoro::Task<Result> explained(QCoro::Task<Result> task, QString prefix)
{
    try {
        co_return co_await std::move(task);
    } catch (const Cancelled &) {
        throw;
    } catch (const std::exception &failure) {
        throw Error(prefix + descriptionOf(failure));
    }
}

/// As much longer as was left to do, at the speed so far.
std::chrono::milliseconds timeLeft(const QElapsedTimer &timer, double done)
{
    return std::chrono::milliseconds(qint64(double(timer.elapsed()) * (1 - done) / done));
}

} // namespace

/// One operation: what is sent to a model, one request each, and what becomes of the answers.
struct TextCorrectionService::Job
{
    enum class Answers {
        /// Of texts sent between markers, to be cleaned.
        Corrections,
        AsTheyAre,
    };

    CorrectionEngine engine;
    /// Empty for the model that the settings choose.
    QString modelFile;
    QString system;
    /// Called on another thread, as texts may be long.
    std::function<QStringList()> texts;
    Answers answers = Answers::AsTheyAre;
    /// Of the error that the user sees.
    QString errorPrefix;
};

TextCorrectionService::TextCorrectionService(AppSettings &settings, CorrectionModelManager &models,
                                             std::unique_ptr<LocalLLMEngine> local,
                                             std::unique_ptr<BuiltInModel> builtIn, QObject *parent)
    : QObject(parent),
      m_settings(settings),
      m_models(models),
      m_local(std::move(local)),
      m_builtIn(std::move(builtIn))
{
    connect(&m_operation, &Operation::runningChanged, this, &TextCorrectionService::isCorrectingChanged);
    connect(&m_operation, &Operation::progressChanged, this, &TextCorrectionService::progressChanged);
    connect(&m_operation, &Operation::errorChanged, this, &TextCorrectionService::errorChanged);
    connect(&settings, &AppSettings::textCorrectionEnabledChanged, this,
            &TextCorrectionService::statusChanged);
    connect(&settings, &AppSettings::correctionEngineChanged, this, &TextCorrectionService::statusChanged);
    connect(&settings, &AppSettings::correctionModelIDChanged, this, &TextCorrectionService::statusChanged);
    connect(&settings, &AppSettings::interfaceLanguageChanged, this, &TextCorrectionService::statusChanged);
    connect(&models, &CorrectionModelManager::downloadedChanged, this, &TextCorrectionService::statusChanged);
    connect(&settings, &AppSettings::textCorrectionEnabledChanged, this, [this] {
        if (m_settings.textCorrectionEnabled())
            return;
        cancel();
        m_local->stop();
    });
}

TextCorrectionService::~TextCorrectionService()
{
    m_scope.end();
}

QCoro::Task<QString> TextCorrectionService::correct(QString text, std::stop_token stop, QString modelFile)
{
    text = text.trimmed();
    if (text.isEmpty())
        co_return QString();
    requireReady(modelFile, u"Коррекция недоступна.");
    const CorrectionEngine engine = engineFor(modelFile);
    const bool isLocal = engine == CorrectionEngine::Local;
    const qsizetype maxChars = isLocal ? maxLocalChunk : maxBuiltInChunk;
    co_return co_await run({.engine = engine,
                            .modelFile = modelFile,
                            .system = correctionSystemPrompt(),
                            .texts = [text, maxChars] { return TextChunks::split(text, maxChars); },
                            .answers = Job::Answers::Corrections,
                            .errorPrefix = isLocal ? u"Ошибка модели: "_s : u"Ошибка коррекции: "_s},
                           stop);
}

QCoro::Task<QString> TextCorrectionService::processDictation(QString text, DictationMode mode,
                                                             std::stop_token stop, QString modelFile)
{
    if (mode == DictationMode::Correct)
        co_return co_await correct(text, stop, modelFile);
    text = text.trimmed();
    if (text.isEmpty())
        co_return QString();
    requireReady(modelFile, unavailableModel);
    const bool isEmail = mode == DictationMode::Email;
    co_return co_await run({.engine = engineFor(modelFile),
                            .modelFile = modelFile,
                            .system = isEmail ? CorrectionPrompts::email() : CorrectionPrompts::request(),
                            .texts = [text] { return QStringList(TextChunks::first(text, maxInput)); },
                            .errorPrefix = processingFailed},
                           stop);
}

QCoro::Task<QString> TextCorrectionService::process(QString transcript, QString instruction,
                                                    std::stop_token stop, QString modelFile)
{
    transcript = transcript.trimmed();
    instruction = instruction.trimmed();
    if (transcript.isEmpty() || instruction.isEmpty())
        co_return QString();
    requireReady(modelFile, unavailableModel);
    const auto question = [transcript, instruction] {
        const QString beginning = TextChunks::first(transcript, maxInput);
        return QStringList(CorrectionPrompts::questionAbout(beginning, instruction));
    };
    co_return co_await run({.engine = engineFor(modelFile),
                            .modelFile = modelFile,
                            .system = CorrectionPrompts::question(),
                            .texts = question,
                            .errorPrefix = processingFailed},
                           stop);
}

QCoro::Task<QString> TextCorrectionService::summarize(QString text, std::stop_token stop, QString modelFile)
{
    text = text.trimmed();
    if (text.isEmpty())
        co_return QString();
    requireReady(modelFile, unavailableModel);
    co_return co_await run({.engine = engineFor(modelFile),
                            .modelFile = modelFile,
                            .system = CorrectionPrompts::protocol(),
                            .texts = [text] { return QStringList(TextChunks::first(text, maxInput)); },
                            .errorPrefix = u"Ошибка протокола: "_s},
                           stop);
}

void TextCorrectionService::requireReady(const QString &modelFile, Localization::Text unavailable)
{
    if (isCorrecting()) {
        throw Error(
            Localization::text(u"Модель занята другим текстом — дождитесь, пока она его обработает."));
    }
    const ModelAvailability now = status(modelFile);
    if (now.isReady)
        return;
    m_operation.setError(now.message.isEmpty() ? unavailable.toString() : now.message);
    throw Error(error());
}

QCoro::Task<QString> TextCorrectionService::run(Job job, std::stop_token stop)
{
    return m_operation.run<QString>(
        [this, job](Progress progress, std::stop_token run) { return carryOut(job, progress, run); }, stop);
}

QCoro::Task<QString> TextCorrectionService::carryOut(Job job, Progress progress, std::stop_token stop)
{
    const QStringList texts = co_await m_scope(offMainThread(job.texts), stop);
    if (job.engine == CorrectionEngine::Local) {
        const QString model = localModelPath(job.modelFile);
        if (model.isEmpty()) // its file was deleted while the operation was starting
            throw Error(Localization::text(u"Не выбрана модель коррекции."));
        co_await m_scope(explained(m_local->load(model, stop), job.errorPrefix), stop);
    }

    const bool isCorrection = job.answers == Job::Answers::Corrections;
    QElapsedTimer timer;
    timer.start();
    QStringList results;
    bool isAnswered = false;
    for (const QString &text : texts) {
        const QString user = isCorrection ? CorrectionPrompts::marked(text) : text;
        const QString answer = co_await m_scope(explained(ask(job, user, stop), job.errorPrefix), stop);
        isAnswered = isAnswered || !answer.trimmed().isEmpty();
        // Of a long text no piece is lost because the model had nothing to say to it.
        results.append(isCorrection ? cleanCorrection(answer, text) : answer);
        const double done = double(results.size()) / double(texts.size());
        progress.report(done, timeLeft(timer, done));
    }
    if (!isAnswered)
        throw Error(Localization::text(u"Модель ничего не ответила."));
    co_return results.join(u"\n\n"_s);
}

QCoro::Task<QString> TextCorrectionService::ask(const Job &job, const QString &user, std::stop_token stop)
{
    return job.engine == CorrectionEngine::Local ? m_local->correct(user, job.system, stop)
                                                 : m_builtIn->respond(job.system, user, stop);
}

ModelAvailability TextCorrectionService::status(const QString &modelFile) const
{
    if (!m_settings.textCorrectionEnabled()) {
        return {.message =
                    Localization::text(u"Обработка текста ИИ-моделью выключена в настройках («Коррекция»).")};
    }
    return engineFor(modelFile) == CorrectionEngine::Local ? localAvailability(modelFile)
                                                           : builtInAvailability();
}

ModelAvailability TextCorrectionService::localAvailability(const QString &modelFile) const
{
    if (m_local->findBinary().isEmpty()) {
        return {.message = Localization::text(
                    u"Движок llama.cpp не установлен. В Терминале выполните: brew install llama.cpp")};
    }
    if (!localModelPath(modelFile).isEmpty())
        return {.isReady = true};
    return {.message =
                m_models.downloaded().isEmpty()
                    ? Localization::text(u"Скачайте модель коррекции в настройках (вкладка «Коррекция»).")
                    : Localization::text(u"Выберите модель коррекции в настройках.")};
}

CorrectionEngine TextCorrectionService::effectiveEngine() const
{
    if (m_settings.correctionEngine() == CorrectionEngine::Local)
        return CorrectionEngine::Local;
    const bool fallsBack = !builtInAvailability().isReady && localAvailability().isReady;
    return fallsBack ? CorrectionEngine::Local : CorrectionEngine::BuiltIn;
}

CorrectionEngine TextCorrectionService::engineFor(const QString &modelFile) const
{
    return modelFile.isEmpty() ? effectiveEngine() : CorrectionEngine::Local;
}

std::optional<CorrectionModel> TextCorrectionService::resolvedLocalModel() const
{
    const QList<CorrectionModel> models = m_models.downloadedModels();
    if (models.isEmpty())
        return std::nullopt;
    const auto chosen = std::ranges::find(models, m_settings.correctionModelID(), &CorrectionModel::id);
    return chosen == models.end() ? models.first() : *chosen;
}

QString TextCorrectionService::localModelPath(const QString &modelFile) const
{
    if (!modelFile.isEmpty())
        return modelFile;
    const std::optional<CorrectionModel> model = resolvedLocalModel();
    return model ? m_models.localPath(*model) : QString();
}

QString TextCorrectionService::correctionSystemPrompt() const
{
    const QString chosen = m_settings.correctionPrompt().trimmed();
    const QString prompt = chosen.isEmpty() ? AppSettings::defaultCorrectionPrompt() : chosen;
    return prompt + u"\n\n"_s + CorrectionPrompts::safeguard();
}

QString TextCorrectionService::cleanCorrection(const QString &answer, const QString &fallback)
{
    const QString cleaned = CorrectionPrompts::withoutEcho(answer);
    return cleaned.isEmpty() ? fallback : cleaned;
}

} // namespace orvane

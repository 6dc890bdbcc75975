#include "correction/TextCorrectionService.h"

#include "base/AnyStop.h"
#include "base/Async.h"
#include "base/localization/Localization.h"
#include "correction/CorrectionPrompts.h"
#include "correction/TextChunks.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace orvane {

namespace {

constexpr qsizetype longestLocalChunk = 1200;
constexpr qsizetype longestBuiltInChunk = 1400;
constexpr qsizetype longestInput = 6000;

/// The models' files were deleted while an operation was starting.
class NoModel : public Error
{
public:
    NoModel() : Error(Localization::text(u"Не выбрана модель коррекции.")) {}
};

QString unavailableModel()
{
    return Localization::text(u"Модель недоступна.");
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
    connect(&settings, &AppSettings::textCorrectionEnabledChanged, this, [this] {
        if (m_settings.textCorrectionEnabled())
            return;
        cancel();
        m_local->stop();
    });
}

TextCorrectionService::~TextCorrectionService()
{
    m_lifetime.request_stop();
}

QCoro::Task<std::optional<QString>> TextCorrectionService::correct(QString text)
{
    text = text.trimmed();
    if (text.isEmpty() || !canStart(Localization::text(u"Коррекция недоступна.")))
        co_return std::nullopt;
    const CorrectionEngine engine = effectiveEngine();
    const bool isLocal = engine == CorrectionEngine::Local;
    const qsizetype longest = isLocal ? longestLocalChunk : longestBuiltInChunk;
    co_return co_await run({.engine = engine,
                            .system = correctionSystemPrompt(),
                            .texts = [text, longest] { return split(text, longest); },
                            .answers = Job::Answers::Corrections,
                            .errorPrefix = isLocal ? u"Ошибка модели: "_s : u"Ошибка коррекции: "_s});
}

QCoro::Task<std::optional<QString>> TextCorrectionService::processDictation(QString text, DictationMode mode)
{
    if (mode == DictationMode::Correct)
        co_return co_await correct(text);
    text = text.trimmed();
    if (text.isEmpty() || !canStart(unavailableModel()))
        co_return std::nullopt;
    const bool isEmail = mode == DictationMode::Email;
    co_return co_await run({.engine = effectiveEngine(),
                            .system = isEmail ? CorrectionPrompts::email() : CorrectionPrompts::request(),
                            .texts = [text] { return QStringList(TextChunks::first(text, longestInput)); },
                            .errorPrefix = u"Ошибка обработки: "_s});
}

QCoro::Task<std::optional<QString>> TextCorrectionService::process(QString transcript, QString instruction)
{
    transcript = transcript.trimmed();
    instruction = instruction.trimmed();
    if (transcript.isEmpty() || instruction.isEmpty() || !canStart(unavailableModel()))
        co_return std::nullopt;
    const auto question = [transcript, instruction] {
        return QStringList(
            CorrectionPrompts::question(TextChunks::first(transcript, longestInput), instruction));
    };
    co_return co_await run({.engine = effectiveEngine(),
                            .system = CorrectionPrompts::question(),
                            .texts = question,
                            .errorPrefix = u"Ошибка обработки: "_s});
}

QCoro::Task<std::optional<QString>> TextCorrectionService::summarize(QString text)
{
    text = text.trimmed();
    if (text.isEmpty() || !canStart(unavailableModel()))
        co_return std::nullopt;
    co_return co_await run({.engine = effectiveEngine(),
                            .system = CorrectionPrompts::protocol(),
                            .texts = [text] { return QStringList(TextChunks::first(text, longestInput)); },
                            .errorPrefix = u"Ошибка протокола: "_s});
}

bool TextCorrectionService::canStart(const QString &unavailable)
{
    if (m_isCorrecting)
        return false;
    const Status now = status();
    if (!now.isReady)
        setError(now.message.isEmpty() ? unavailable : now.message);
    return now.isReady;
}

QCoro::Task<std::optional<QString>> TextCorrectionService::run(Job job)
{
    const std::stop_token alive = m_lifetime.get_token();
    m_cancellation = std::stop_source();
    const AnyStop either(alive, m_cancellation.get_token());
    setError({});
    setProgress(0);
    setCorrecting(true);

    std::optional<QString> result;
    QString failure;
    try {
        result = co_await carryOut(job, either.token());
    } catch (const Cancelled &) {
        // The engine was stopped, if it was not this operation.
    } catch (const NoModel &error) {
        failure = error.description();
    } catch (const std::exception &error) {
        failure = job.errorPrefix + QString::fromUtf8(error.what());
    }
    // From its cancellation on, the state is the next operation's.
    if (either.token().stop_requested())
        co_return std::nullopt;
    setError(failure);
    setCorrecting(false);
    co_return result;
}

QCoro::Task<QString> TextCorrectionService::carryOut(Job job, std::stop_token stop)
{
    const QStringList texts = co_await offMainThread(job.texts);
    throwIfCancelled(stop);
    if (job.engine == CorrectionEngine::Local) {
        const QString model = localModelPath();
        if (model.isEmpty())
            throw NoModel();
        co_await m_local->load(model, stop);
        throwIfCancelled(stop);
    }
    const bool isCorrection = job.answers == Job::Answers::Corrections;
    QStringList results;
    for (const QString &text : texts) {
        const QString answer = co_await ask(job, isCorrection ? CorrectionPrompts::marked(text) : text);
        throwIfCancelled(stop);
        results.append(isCorrection ? cleanCorrection(answer, text) : answer);
        setProgress(double(results.size()) / double(texts.size()));
    }
    co_return results.join(u"\n\n"_s);
}

QCoro::Task<QString> TextCorrectionService::ask(const Job &job, const QString &user)
{
    return job.engine == CorrectionEngine::Local ? m_local->correct(user, job.system)
                                                 : m_builtIn->respond(job.system, user);
}

void TextCorrectionService::cancel()
{
    if (!m_isCorrecting)
        return;
    m_local->requestRestart();
    m_cancellation.request_stop();
    setProgress(0);
    setCorrecting(false);
}

TextCorrectionService::Status TextCorrectionService::status() const
{
    if (!m_settings.textCorrectionEnabled()) {
        return {.isReady = false,
                .message =
                    Localization::text(u"Обработка текста ИИ-моделью выключена в настройках («Коррекция»).")};
    }
    return effectiveEngine() == CorrectionEngine::Local ? localAvailability() : builtInAvailability();
}

TextCorrectionService::Status TextCorrectionService::localAvailability() const
{
    const auto unavailable = [](Localization::Text text) {
        return Status{.isReady = false, .message = text.toString()};
    };
    if (m_local->findBinary().isEmpty()) {
        return unavailable(u"Движок llama.cpp не установлен. В Терминале выполните: brew install llama.cpp");
    }
    if (!localModelPath().isEmpty())
        return {.isReady = true, .message = {}};
    return unavailable(
        m_models.downloaded().isEmpty()
            ? Localization::Text(u"Скачайте модель коррекции в настройках (вкладка «Коррекция»).")
            : Localization::Text(u"Выберите модель коррекции в настройках."));
}

CorrectionEngine TextCorrectionService::effectiveEngine() const
{
    if (!m_modelFile.isEmpty() || m_settings.correctionEngine() == CorrectionEngine::Local)
        return CorrectionEngine::Local;
    const bool fallsBack = !builtInAvailability().isReady && localAvailability().isReady;
    return fallsBack ? CorrectionEngine::Local : CorrectionEngine::Apple;
}

std::optional<CorrectionModel> TextCorrectionService::resolvedLocalModel() const
{
    const QList<CorrectionModel> models = m_models.downloadedModels();
    if (models.isEmpty())
        return std::nullopt;
    const auto chosen = std::ranges::find(models, m_settings.correctionModelID(), &CorrectionModel::id);
    return chosen == models.end() ? models.first() : *chosen;
}

QString TextCorrectionService::localModelPath() const
{
    if (!m_modelFile.isEmpty())
        return m_modelFile;
    const std::optional<CorrectionModel> model = resolvedLocalModel();
    return model ? m_models.localPath(*model) : QString();
}

QString TextCorrectionService::correctionSystemPrompt() const
{
    const QString chosen = m_settings.correctionPrompt().trimmed();
    const QString prompt = chosen.isEmpty() ? AppSettings::defaultCorrectionPrompt() : chosen;
    return prompt + u"\n\n"_s + CorrectionPrompts::safeguard();
}

QStringList TextCorrectionService::split(const QString &text, qsizetype maxChars)
{
    return TextChunks::split(text, maxChars);
}

QStringList TextCorrectionService::hardSplit(const QString &text, qsizetype maxChars)
{
    return TextChunks::hardSplit(text, maxChars);
}

QString TextCorrectionService::cleanCorrection(const QString &answer, const QString &fallback)
{
    const QString cleaned = CorrectionPrompts::removedFrom(answer);
    return cleaned.isEmpty() ? fallback : cleaned;
}

void TextCorrectionService::setCorrecting(bool correcting)
{
    if (m_isCorrecting == correcting)
        return;
    m_isCorrecting = correcting;
    Q_EMIT isCorrectingChanged();
}

void TextCorrectionService::setProgress(double progress)
{
    if (m_progress == progress)
        return;
    m_progress = progress;
    Q_EMIT progressChanged();
}

void TextCorrectionService::setError(const QString &text)
{
    if (m_error == text)
        return;
    m_error = text;
    Q_EMIT errorChanged();
}

} // namespace orvane

#include "recognition/WhisperServerEngine.h"

#include "audio/SampleRate.h"
#include "audio/WavFileWriter.h"
#include "base/AnyStop.h"
#include "base/Async.h"
#include "base/files/FileError.h"
#include "base/files/TemporaryFile.h"
#include "recognition/WhisperResponse.h"

#include <QFileInfo>
#include <QUuid>

#include <cerrno>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace orvane {

namespace {

constexpr std::chrono::milliseconds requestTimeout = 30min;
constexpr int badRequest = 400;

EngineServer::Description description()
{
    return {.executable = u"whisper-server"_s,
            .serverName = "whisper.cpp",
            .fallbackPort = 48700,
            .startTimeout = 120s,
            .startErrorPrefix = u"Не удалось запустить движок распознавания: "_s,
            .requestErrorPrefix = u"Ошибка распознавания: "_s,
            .notFoundText =
                u"Движок распознавания не установлен. В Терминале выполните: brew install whisper-cpp"_s};
}

MultipartBody::Fields formFields(const QString &language, WhisperServerEngine::NonSpeech nonSpeech)
{
    MultipartBody::Fields fields = {
        {"response_format", "verbose_json"},
        {"language", language.toUtf8()},
        {"temperature", "0.0"},
        // Nobody reads the probabilities, and computing them takes a third of a short request.
        {"no_language_probabilities", "true"},
        // The server breaks long segments, by default in the middle of a word.
        {"split_on_word", "true"},
    };
    if (nonSpeech == WhisperServerEngine::NonSpeech::Suppress)
        fields.emplaceBack("suppress_nst", "true");
    return fields;
}

} // namespace

WhisperServerEngine::WhisperServerEngine(const SearchPath &search, EngineProcessRegistry &registry,
                                         const QString &temporaryFolder)
    : EngineServer(description(), search, registry),
      m_temporaryFolder(temporaryFolder)
{}

QStringList WhisperServerEngine::arguments(const QString &executable, const QString &modelPath) const
{
    QStringList arguments = {u"-m"_s,
                             modelPath,
                             u"--host"_s,
                             u"127.0.0.1"_s,
                             u"--port"_s,
                             QString::number(port()),
                             u"--max-context"_s,
                             u"0"_s};
    const QString voiceActivityModel = QFileInfo(executable).path() + u"/ggml-silero-v5.1.2.bin"_s;
    if (QFileInfo::exists(voiceActivityModel))
        arguments += {u"--vad-model"_s, voiceActivityModel};
    return arguments;
}

QNetworkRequest WhisperServerEngine::probeRequest() const
{
    return requestTo(u"/"_s);
}

bool WhisperServerEngine::isReady(int) const
{
    // The port opens only after the model is loaded, so any answer at all will do.
    return true;
}

QCoro::Task<RecognisedSpeech> WhisperServerEngine::transcribe(std::vector<float> samples, QString modelPath,
                                                              QString language, NonSpeech nonSpeech,
                                                              std::stop_token stop)
{
    co_await scope()(load(modelPath, stop), stop);
    const InFlight inFlight = beginRequest(); // no other model may be loaded from here on

    const TemporaryFile wav(m_temporaryFolder, u"orvane-"_s, u".wav"_s);
    auto writeWav = [path = wav.path(), samples = std::move(samples)] {
        WavFileWriter writer(path, sampleRate);
        appendInPieces(writer, samples);
        writer.finalize();
    };
    co_await scope()(offMainThread(std::move(writeWav)), stop); // moved: an hour of samples is 230 MB
    co_return co_await scope()(infer(wav.path(), language, nonSpeech, stop), stop);
}

QCoro::Task<RecognisedSpeech> WhisperServerEngine::infer(QString audioPath, QString language,
                                                         NonSpeech nonSpeech, std::stop_token stop)
{
    if (!isRunning())
        throw requestFailed(u"сервер не запущен"_s);
    const InFlight inFlight = beginRequest();

    const HttpAnswer answer = co_await scope()(post(audioPath, formFields(language, nonSpeech), stop), stop);
    if (answer.status == badRequest)
        throw requestRejected(u"HTTP %1"_s.arg(answer.status));
    if (!answer.transportError.isEmpty()) {
        co_await scope()(untilDeathIsKnown(), stop);
        throw requestFailed(answer.transportError);
    }
    if (answer.status != 200)
        throw requestFailed(u"HTTP %1"_s.arg(answer.status));

    const auto parse = [json = answer.body] { return WhisperResponse::speech(json); };
    const std::optional<RecognisedSpeech> speech = co_await scope()(offMainThread(parse), stop);
    if (!speech && WhisperResponse::isRejection(answer.body))
        throw requestRejected(u"неожиданный формат ответа"_s);
    if (!speech)
        throw requestFailed(u"неожиданный формат ответа"_s);
    co_return *speech;
}

QCoro::Task<HttpAnswer> WhisperServerEngine::post(QString audioPath, MultipartBody::Fields fields,
                                                  std::stop_token stop)
{
    const QByteArray boundary = "orvane-" + QUuid::createUuid().toByteArray(QUuid::WithoutBraces).toUpper();
    std::stop_source unreadable;
    auto body = std::make_unique<MultipartBody>(boundary, fields, audioPath, unreadable);

    QNetworkRequest request = requestTo(u"/inference"_s);
    request.setHeader(QNetworkRequest::ContentTypeHeader, "multipart/form-data; boundary=" + boundary);
    request.setTransferTimeout(requestTimeout.count());
    std::unique_ptr<QNetworkReply> reply(network().post(request, body.get()));
    body.release()->setParent(reply.get());
    const AnyStop any(stop, unreadable.get_token());
    try {
        co_return co_await scope()(answerTo(std::move(reply), any.token()), stop);
    } catch (const Cancelled &) {
        if (!unreadable.stop_requested() || stop.stop_requested())
            throw;
    }
    throw FileError::notRead(audioPath, EIO);
}

} // namespace orvane

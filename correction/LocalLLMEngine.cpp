#include "correction/LocalLLMEngine.h"

#include "base/localization/Localization.h"
#include "correction/ChatExchange.h"
#include "engine/OneTimeBody.h"

#include <algorithm>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace orvane {

namespace {

constexpr std::chrono::milliseconds requestTimeout = 300s;
constexpr double correctionTemperature = 0.2;
constexpr int ok = 200;

EngineServer::Description description()
{
    return {.executable = u"llama-server"_s,
            .serverName = "llama.cpp",
            .fallbackPort = 49700,
            .startTimeout = 90s,
            .startErrorPrefix = u"Не удалось запустить llama-server: "_s,
            .requestErrorPrefix = u"Ошибка запроса к модели: "_s,
            .notFoundText = u"llama-server не найден. Установите движок командой: brew install llama.cpp"_s};
}

class BytesBody : public OneTimeBody<QIODevice>
{
public:
    explicit BytesBody(QByteArray bytes) : m_bytes(std::move(bytes)) { open(ReadOnly | Unbuffered); }

    [[nodiscard]] qint64 size() const override { return m_bytes.size(); }

protected:
    qint64 readData(char *data, qint64 maxSize) override
    {
        const qint64 size = std::min(maxSize, m_bytes.size() - pos());
        std::copy_n(m_bytes.cbegin() + pos(), size, data);
        return size;
    }
    qint64 writeData(const char *, qint64) override { return -1; }

private:
    const QByteArray m_bytes;
};

} // namespace

LocalLLMEngine::LocalLLMEngine(const SearchPath &search, EngineProcessRegistry &registry)
    : EngineServer(description(), search, registry)
{}

QStringList LocalLLMEngine::arguments(const QString &, const QString &modelPath) const
{
    return {u"-m"_s,         modelPath, u"--host"_s, u"127.0.0.1"_s, u"--port"_s, QString::number(port()),
            u"--api-key"_s,  key(),     u"-ngl"_s,   u"99"_s, // all layers on the graphics processor
            u"--ctx-size"_s, u"8192"_s, u"--jinja"_s};        // the model's own chat template
}

QNetworkRequest LocalLLMEngine::probeRequest() const
{
    return authorizedRequestTo(u"/health"_s);
}

bool LocalLLMEngine::isReady(int status) const
{
    // While the model is being loaded the server answers 503.
    return status == ok;
}

QCoro::Task<QString> LocalLLMEngine::correct(QString text, QString systemPrompt, std::stop_token stop)
{
    return chat({{.role = u"system"_s, .content = systemPrompt}, {.role = u"user"_s, .content = text}},
                correctionTemperature, stop);
}

QCoro::Task<QString> LocalLLMEngine::chat(QList<Message> messages, double temperature, std::stop_token stop)
{
    if (!isRunning())
        throw requestFailed(u"сервер не запущен"_s);
    const InFlight inFlight = beginRequest();

    const HttpAnswer answer = co_await scope()(post(ChatExchange::body(messages, temperature), stop), stop);
    if (!answer.transportError.isEmpty()) {
        co_await scope()(untilDeathIsKnown(), stop);
        throw EngineError(EngineError::Kind::requestFailed, answer.transportError);
    }
    if (answer.status != ok && ChatExchange::isContextOverflow(answer.body)) {
        throw EngineError(EngineError::Kind::contextOverflow,
                          Localization::text(u"Документ слишком большой для чата. Сократите его или задайте "
                                             u"вопрос по части текста."));
    }
    if (answer.status != ok)
        throw requestFailed(u"HTTP %1"_s.arg(answer.status));
    const std::optional<QString> text = ChatExchange::answer(answer.body);
    if (!text)
        throw requestFailed(u"неожиданный формат ответа"_s);
    co_return *text;
}

QNetworkRequest LocalLLMEngine::authorizedRequestTo(const QString &path) const
{
    QNetworkRequest request = requestTo(path);
    request.setRawHeader("Authorization", "Bearer " + key().toLatin1());
    return request;
}

QCoro::Task<HttpAnswer> LocalLLMEngine::post(QByteArray body, std::stop_token stop)
{
    QNetworkRequest request = authorizedRequestTo(u"/v1/chat/completions"_s);
    request.setHeader(QNetworkRequest::ContentTypeHeader, u"application/json"_s);
    request.setTransferTimeout(requestTimeout.count());
    auto device = std::make_unique<BytesBody>(std::move(body));
    std::unique_ptr<QNetworkReply> reply(network().post(request, device.get()));
    device.release()->setParent(reply.get());
    return answerTo(std::move(reply), stop);
}

} // namespace orvane

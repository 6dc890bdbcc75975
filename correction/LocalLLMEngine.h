#pragma once

#include "correction/ChatExchange.h"
#include "engine/EngineServer.h"

#include <QList>
#include <QString>

namespace orvane {

/// Runs a language model in GGUF form with llama.cpp's `llama-server`. Owned by the text correction
/// service, its only client. See EngineServer for loading, stopping and errors; a transfer that breaks off
/// has the bare reason for its description.
class LocalLLMEngine : public EngineServer
{
    Q_OBJECT

public:
    using Message = ChatExchange::Message;

    LocalLLMEngine(const SearchPath &search, EngineProcessRegistry &registry);

    /// The model's answer to a text under a system prompt, as it came. To be called right after load().
    QCoro::Task<QString> correct(QString text, QString systemPrompt, std::stop_token stop = {});

    /// The same for any conversation; the higher the temperature, the freer the answer. Throws EngineError,
    /// with kind contextOverflow when the conversation is too long for the model; or Cancelled, and then the
    /// server stops computing at once.
    QCoro::Task<QString> chat(QList<Message> messages, double temperature, std::stop_token stop = {});

protected:
    [[nodiscard]] QStringList arguments(const QString &executable, const QString &modelPath) const override;
    [[nodiscard]] QNetworkRequest probeRequest() const override;
    [[nodiscard]] bool isReady(int status) const override;

private:
    [[nodiscard]] QNetworkRequest authorizedRequestTo(const QString &path) const;
    QCoro::Task<HttpAnswer> post(QByteArray body, std::stop_token stop);
};

} // namespace orvane

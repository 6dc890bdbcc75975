#include "engine/HttpExchange.h"

#include "base/Error.h"

#include <QCoroNetworkReply>

using namespace Qt::StringLiterals;

namespace orvane {

namespace {

// Qt words these in English only; they end in sentences that are Russian in every interface language.
QString transportErrorText(const QNetworkReply &reply)
{
    switch (reply.error()) {
    case QNetworkReply::ConnectionRefusedError:
        return u"сервер отклонил соединение"_s;
    case QNetworkReply::RemoteHostClosedError:
    case QNetworkReply::ContentReSendError: // closed without an answer, and not to be sent again
        return u"сервер закрыл соединение"_s;
    case QNetworkReply::TimeoutError:
    case QNetworkReply::OperationCanceledError:
        return u"сервер не ответил вовремя"_s;
    default:
        return u"сбой соединения с сервером"_s;
    }
}

} // namespace

QCoro::Task<HttpAnswer> answerOf(std::unique_ptr<QNetworkReply> reply, std::stop_token stop)
{
    {
        const std::stop_callback abort(stop, [&reply] { reply->abort(); });
        if (!reply->isFinished())
            co_await reply.get();
    }
    // Deleting a reply inside its own signal is not allowed.
    const auto later = [](QNetworkReply *finished) { finished->deleteLater(); };
    const std::unique_ptr<QNetworkReply, decltype(later)> finished(reply.release(), later);
    throwIfCancelled(stop);

    HttpAnswer answer;
    answer.status = finished->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
    answer.body = finished->readAll();
    answer.serverName = finished->rawHeader("Server");
    const bool brokeOff = finished->error() != QNetworkReply::NoError &&
                          (answer.status == 0 || finished->error() < QNetworkReply::ContentAccessDenied);
    if (brokeOff)
        answer.transportError = transportErrorText(*finished);
    co_return answer;
}

} // namespace orvane

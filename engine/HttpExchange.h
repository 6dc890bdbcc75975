#pragma once

#include <QByteArray>
#include <QNetworkReply>
#include <QString>

#include <QCoroTask>

#include <memory>
#include <stop_token>

namespace orvane {

/// How an HTTP exchange ended.
struct HttpAnswer
{
    /// The status code; 0 when no HTTP response arrived.
    int status = 0;
    QByteArray body;
    /// How the server names itself; empty when it does not.
    QByteArray serverName;
    /// Why the transfer failed, in words; empty when a whole response arrived, whatever its status.
    QString transportError;
};

/// Waits for the reply, takes it over and returns what came. A requested stop aborts the transfer,
/// which tells the server to stop computing, and throws Cancelled. Main thread.
[[nodiscard]] QCoro::Task<HttpAnswer> answerOf(std::unique_ptr<QNetworkReply> reply,
                                               std::stop_token stop = {});

} // namespace orvane

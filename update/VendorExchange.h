#pragma once

#include <QByteArray>
#include <QString>
#include <QUrl>

#include <chrono>
#include <functional>
#include <optional>
#include <stop_token>

/// HTTP requests that the calling thread waits for. For pool threads only: finding the proxy and loading
/// the certificates takes longer than the main thread may block. Redirects are followed unless they lead
/// from https to http; the system's proxy is used for all but this machine.
namespace orvane::VendorExchange {

struct Request
{
    QUrl url;
    /// Posted when not empty; otherwise the request is a GET.
    QByteArray json{};
    /// How long the connection may bring nothing.
    std::chrono::milliseconds idleTimeout{60'000};
    /// How long the whole exchange may take; none for no limit.
    std::optional<std::chrono::milliseconds> wholeTimeout{};
};

struct Answer
{
    /// Where the body came from, after redirects.
    QUrl url;
    /// The header as sent; empty when absent.
    QByteArray contentDisposition;
};

/// Takes the next bytes of the body, and the length of the whole where the server gives it. What it
/// throws ends the exchange and is thrown on.
using Sink = std::function<void(const QByteArray &bytes, std::optional<qint64> length)>;

/// Throws UpdateError unless the body of an answer from 200 to 299 came whole; Cancelled when stopped.
Answer stream(const Request &request, const Sink &sink, const std::stop_token &stop);

/// The whole body, of at most 1 MiB. Throws as stream() does.
QByteArray fetch(const Request &request, const std::stop_token &stop);

} // namespace orvane::VendorExchange

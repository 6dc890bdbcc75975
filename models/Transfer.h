#pragma once

#include "models/DownloadMeta.h"

#include <QUrl>

#include <chrono>
#include <exception>
#include <memory>
#include <optional>
#include <span>

using CURL = void;
struct curl_slist;

namespace orvane {

/// What the headers of a server's last answer say, redirects apart.
struct DownloadAnswer
{
    struct ContentRange
    {
        ByteRange range;
        qint64 total = 0;
    };

    int status = 0;
    /// Without "W/" and quotes.
    std::optional<QString> etag;
    /// None when the header is absent or lacks one of the three numbers.
    std::optional<ContentRange> contentRange;
    std::optional<qint64> contentLength;
    /// The bytes would arrive compressed, although that was not asked for.
    bool isEncoded = false;

    void read(QByteArrayView name, QByteArrayView value);
};

/// One GET request through the system's proxy; redirects are followed, but never from https to http.
/// A subclass takes the answer. What it throws ends the transfer and comes out of the session's run().
class Transfer
{
public:
    /// `range` none: the whole file.
    Transfer(const QUrl &url, std::optional<ByteRange> range, std::chrono::milliseconds idleTimeout);
    virtual ~Transfer() = default;
    Transfer(const Transfer &) = delete;
    Transfer &operator=(const Transfer &) = delete;

    [[nodiscard]] CURL *handle() const { return m_handle.get(); }
    [[nodiscard]] static Transfer &of(CURL *handle);

    void throwIfIdle() const;
    /// Called once, after the last byte. Throws why the transfer failed, in case it did; `result` is a
    /// CURLcode.
    void finish(int result);

    /// No more than this comes to received() at once.
    static constexpr size_t bufferSize = 128 * 1024;

protected:
    /// Before the body of the last answer.
    virtual void answered(const DownloadAnswer &answer) = 0;
    virtual void received(std::span<const char> bytes) = 0;
    /// The connection has ended in order, or broke off after the last answer.
    virtual void ended() = 0;

private:
    /// Runs a step of the subclass between the library's C functions; false when it threw.
    template <typename Step>
    bool guarded(Step step);
    void takeHeaderLine(QByteArrayView line);
    [[nodiscard]] bool redirectsToInsecure(QByteArrayView target) const;

    static size_t headerCallback(char *data, size_t size, size_t count, void *self);
    static size_t bodyCallback(char *data, size_t size, size_t count, void *self);

    const std::unique_ptr<CURL, void (*)(CURL *)> m_handle;
    const std::unique_ptr<curl_slist, void (*)(curl_slist *)> m_headers;
    const std::chrono::milliseconds m_idleTimeout;
    std::chrono::steady_clock::time_point m_lastActivity;
    DownloadAnswer m_answer;
    bool m_hasAnswered = false;
    bool m_hasEnded = false;
    std::exception_ptr m_failure;
};

} // namespace orvane

#include "models/Transfer.h"

#include "base/localization/Localization.h"
#include "models/Curl.h"
#include "models/DownloadError.h"
#include "models/SystemProxy.h"
#include "settings/BuildInfo.h"

#include <QRegularExpression>

#include <cerrno>

using namespace Qt::StringLiterals;

namespace orvane {

using Localization::text;

namespace {

constexpr long maxRedirects = 20;

DownloadError timedOut()
{
    return DownloadError::connectionFailed(
        text(u"Сервер моделей перестал отвечать. Повторите загрузку: она продолжится."));
}

DownloadError insecureRedirect()
{
    return DownloadError::connectionFailed(
        text(u"Сервер перенаправил загрузку на незащищённый адрес, поэтому она остановлена."));
}

bool hasNoWayToTheServer(CURL *handle)
{
    long error = 0;
    curl().easy_getinfo(handle, CURLINFO_OS_ERRNO, &error);
    return error == ENETUNREACH || error == EHOSTUNREACH || error == ENETDOWN;
}

/// Why no last answer came.
DownloadError connectionFailure(CURL *handle, int result)
{
    long proxyStatus = 0;
    curl().easy_getinfo(handle, CURLINFO_HTTP_CONNECTCODE, &proxyStatus);
    if (proxyStatus >= 300 || result == CURLE_COULDNT_RESOLVE_PROXY || result == CURLE_PROXY)
        return DownloadError::connectionFailed(
            text(u"Прокси-сервер не пропускает загрузку. Проверьте настройки прокси."));
    const QString notConnected = text(u"Не удалось соединиться с сервером моделей. Повторите загрузку.");
    if (result == CURLE_COULDNT_CONNECT && hasNoWayToTheServer(handle))
        return DownloadError::hostUnreachable(notConnected);
    switch (result) {
    case CURLE_COULDNT_RESOLVE_HOST:
        return DownloadError::hostUnreachable(
            text(u"Сервер моделей не найден. Проверьте подключение к интернету."));
    case CURLE_SSL_CONNECT_ERROR:
    case CURLE_PEER_FAILED_VERIFICATION:
        return DownloadError::connectionFailed(
            text(u"Не удалось установить защищённое соединение с сервером моделей."));
    case CURLE_TOO_MANY_REDIRECTS:
        return DownloadError::connectionFailed(text(u"Сервер перенаправляет загрузку по кругу."));
    case CURLE_OPERATION_TIMEDOUT:
        return timedOut();
    default:
        return DownloadError::connectionFailed(notConnected);
    }
}

std::optional<DownloadAnswer::ContentRange> parseContentRange(QByteArrayView value)
{
    static const QRegularExpression form(u"^bytes (\\d+)-(\\d+)/(\\d+)$"_s);
    const auto match = form.match(QString::fromLatin1(value));
    bool fits[3] = {};
    const DownloadAnswer::ContentRange answer{.range = {.start = match.captured(1).toLongLong(&fits[0]),
                                                        .end = match.captured(2).toLongLong(&fits[1])},
                                              .total = match.captured(3).toLongLong(&fits[2])};
    return fits[0] && fits[1] && fits[2] ? std::optional(answer) : std::nullopt;
}

QString bareEntityTag(QByteArrayView value)
{
    const QString whole = QString::fromUtf8(value);
    QStringView tag = whole;
    if (tag.startsWith(u"W/"))
        tag = tag.mid(2);
    while (tag.startsWith(u'"'))
        tag = tag.mid(1);
    while (tag.endsWith(u'"'))
        tag.chop(1);
    return tag.toString();
}

bool is(QByteArrayView name, QByteArrayView expected)
{
    return name.compare(expected, Qt::CaseInsensitive) == 0;
}

} // namespace

void DownloadAnswer::read(QByteArrayView name, QByteArrayView value)
{
    if (is(name, "etag")) {
        etag = bareEntityTag(value);
    } else if (is(name, "content-range")) {
        contentRange = parseContentRange(value);
    } else if (is(name, "content-length")) {
        bool isNumber = false;
        const qint64 length = value.toLongLong(&isNumber);
        if (isNumber && length >= 0)
            contentLength = length;
    } else if (is(name, "content-encoding")) {
        isEncoded = !is(value, "identity");
    }
}

Transfer::Transfer(const QUrl &url, std::optional<ByteRange> range, std::chrono::milliseconds idleTimeout)
    : m_handle(curl().easy_init(), [](CURL *handle) { curl().easy_cleanup(handle); }),
      m_headers(curl().slist_append(nullptr, "Accept-Encoding: identity"),
                [](curl_slist *list) { curl().slist_free_all(list); }),
      m_idleTimeout(idleTimeout),
      m_lastActivity(std::chrono::steady_clock::now())
{
    CURL *handle = m_handle.get();
    curl().easy_setopt(handle, CURLOPT_PRIVATE, this);
    curl().easy_setopt(handle, CURLOPT_URL, url.toEncoded().constData());
    if (range) {
        const QByteArray bytes = QByteArray::number(range->start) + '-' + QByteArray::number(range->end);
        curl().easy_setopt(handle, CURLOPT_RANGE, bytes.constData());
    }
    curl().easy_setopt(handle, CURLOPT_HTTPHEADER, m_headers.get());
    curl().easy_setopt(handle, CURLOPT_USERAGENT,
                       (QByteArray("Orvane/") + BuildInfo::version.data()).constData());
    curl().easy_setopt(handle, CURLOPT_HEADERFUNCTION, &Transfer::headerCallback);
    curl().easy_setopt(handle, CURLOPT_HEADERDATA, this);
    curl().easy_setopt(handle, CURLOPT_WRITEFUNCTION, &Transfer::bodyCallback);
    curl().easy_setopt(handle, CURLOPT_WRITEDATA, this);
    curl().easy_setopt(handle, CURLOPT_BUFFERSIZE, static_cast<long>(bufferSize));

    // With HTTP/2 all segments would share one connection, and its speed.
    curl().easy_setopt(handle, CURLOPT_HTTP_VERSION, static_cast<long>(CURL_HTTP_VERSION_1_1));
    curl().easy_setopt(handle, CURLOPT_PROTOCOLS_STR, "http,https");
    curl().easy_setopt(handle, CURLOPT_REDIR_PROTOCOLS_STR, "http,https");
    curl().easy_setopt(handle, CURLOPT_FOLLOWLOCATION, 1L);
    curl().easy_setopt(handle, CURLOPT_MAXREDIRS, maxRedirects);
    curl().easy_setopt(handle, CURLOPT_SUPPRESS_CONNECT_HEADERS, 1L);
    curl().easy_setopt(handle, CURLOPT_CONNECTTIMEOUT_MS, static_cast<long>(idleTimeout.count()));
    // Threads and signals do not mix; and a name that resolves slowly must not hold up a stop request.
    curl().easy_setopt(handle, CURLOPT_NOSIGNAL, 1L);
    curl().easy_setopt(handle, CURLOPT_QUICK_EXIT, 1L);

    SystemProxy::apply(handle, url);
    // Where OpenSSL programs look for the certificates of a company's own authority.
    if (const QByteArray authorities = qgetenv("SSL_CERT_FILE"); !authorities.isEmpty())
        curl().easy_setopt(handle, CURLOPT_CAINFO, authorities.constData());
}

Transfer &Transfer::of(CURL *handle)
{
    Transfer *transfer = nullptr;
    curl().easy_getinfo(handle, CURLINFO_PRIVATE, &transfer);
    return *transfer;
}

void Transfer::throwIfIdle() const
{
    if (!m_hasEnded && std::chrono::steady_clock::now() - m_lastActivity > m_idleTimeout)
        throw timedOut();
}

void Transfer::finish(int result)
{
    m_hasEnded = true;
    if (m_failure)
        std::rethrow_exception(m_failure);
    if (result == CURLE_OK && !m_hasAnswered) // a redirect to nowhere
        throw DownloadError::badStatus(m_answer.status);
    if (!m_hasAnswered)
        throw connectionFailure(m_handle.get(), result);
    ended();
}

template <typename Step>
bool Transfer::guarded(Step step)
{
    m_lastActivity = std::chrono::steady_clock::now();
    try {
        step();
        return true;
    } catch (...) {
        m_failure = std::current_exception();
        return false;
    }
}

size_t Transfer::headerCallback(char *data, size_t size, size_t count, void *self)
{
    auto *transfer = static_cast<Transfer *>(self);
    const QByteArrayView line(data, static_cast<qsizetype>(size * count));
    return transfer->guarded([&] { transfer->takeHeaderLine(line.trimmed()); }) ? size * count : 0;
}

size_t Transfer::bodyCallback(char *data, size_t size, size_t count, void *self)
{
    auto *transfer = static_cast<Transfer *>(self);
    const std::span<const char> bytes(data, size * count);
    return transfer->guarded([&] { transfer->received(bytes); }) ? bytes.size() : CURL_WRITEFUNC_ERROR;
}

void Transfer::takeHeaderLine(QByteArrayView line)
{
    if (m_hasAnswered) // trailers of a chunked body
        return;
    if (line.startsWith("HTTP/")) {
        long status = 0;
        curl().easy_getinfo(m_handle.get(), CURLINFO_RESPONSE_CODE, &status);
        m_answer = {};
        m_answer.status = static_cast<int>(status);
    } else if (const qsizetype colon = line.indexOf(':'); colon > 0) {
        const QByteArrayView name = line.first(colon);
        const QByteArrayView value = line.sliced(colon + 1).trimmed();
        if (is(name, "location") && m_answer.status / 100 == 3 && redirectsToInsecure(value))
            throw insecureRedirect();
        m_answer.read(name, value);
    } else if (line.isEmpty() && m_answer.status >= 200 && m_answer.status / 100 != 3) {
        m_hasAnswered = true;
        answered(m_answer);
    }
}

bool Transfer::redirectsToInsecure(QByteArrayView target) const
{
    const char *address = nullptr;
    curl().easy_getinfo(m_handle.get(), CURLINFO_EFFECTIVE_URL, &address);
    const QUrl current = QUrl::fromEncoded(address);
    // An address that only the library below understands has no scheme here.
    return current.scheme() == u"https" &&
           current.resolved(QUrl::fromEncoded(target.toByteArray())).scheme() != u"https";
}

} // namespace orvane

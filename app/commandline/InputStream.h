#pragma once

#include <QByteArray>
#include <QString>

#include <QCoroTask>

#include <stop_token>

namespace orvane {

/// A file, a pipe or standard input, read piece by piece. Nothing waits but the coroutine, so that Ctrl-C
/// works however long somebody takes to write.
class InputStream
{
public:
    /// Names standard input where a file is asked for.
    static constexpr QStringView standardInput = u"-";

    /// The file's name, or what to call standard input.
    [[nodiscard]] static QString title(const QString &source);

    /// Throws Error when it cannot be opened.
    explicit InputStream(const QString &source);
    ~InputStream();
    Q_DISABLE_COPY_MOVE(InputStream)

    /// The next bytes; none at the end. Throws Error, and Cancelled when it is stopped. This must outlive it.
    [[nodiscard]] QCoro::Task<QByteArray> next(std::stop_token stop);

private:
    const QString m_source;
    const int m_descriptor;
};

} // namespace orvane

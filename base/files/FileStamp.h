#pragma once

#include <QByteArray>

#include <optional>

namespace orvane {

/// What tells one state of a file from another without reading it.
struct FileStamp
{
    qint64 size = 0;
    /// Nanoseconds since 1970.
    qint64 modified = 0;
    quint64 inode = 0;

    /// Of the regular file at the path (as the system encodes it); none when there is none.
    [[nodiscard]] static std::optional<FileStamp> of(const QByteArray &path);
    /// Of a file that is open for writing, as it will stand after being renamed.
    [[nodiscard]] static std::optional<FileStamp> of(int descriptor);

    bool operator==(const FileStamp &) const = default;
};

/// Reads a regular file into `contents`, whose memory is reused, and returns the stamp of what was read;
/// none when it cannot be read. Never waits for a pipe.
[[nodiscard]] std::optional<FileStamp> readRegularFile(const QByteArray &path, QByteArray &contents);

} // namespace orvane

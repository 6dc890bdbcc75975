#pragma once

#include <QString>

#include <span>

/// What downloads need of the system beyond QFile, on an open file's handle.
namespace orvane::FileControl {

enum class Locked { Yes, ByAnother, Failed };
/// Locks the file against every other handle, in this process and in others, until it is closed or the
/// process ends.
[[nodiscard]] Locked tryLock(int handle);

/// Whether the path names the open file.
[[nodiscard]] bool isOpenAs(int handle, const QString &path);

/// Bytes of the disk that the file takes.
[[nodiscard]] qint64 allocated(int handle);

enum class Written { All, DiskFull, Failed };
[[nodiscard]] Written write(int handle, qint64 offset, std::span<const char> bytes);

/// Has the disk begin with that range without waiting for it. Only a hint.
void startFlush(int handle, qint64 offset, qint64 length);

/// Waits until the whole file is on the disk; false when it cannot be.
[[nodiscard]] bool flush(int handle);

} // namespace orvane::FileControl

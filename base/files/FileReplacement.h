#pragma once

#include <QByteArrayView>
#include <QString>

namespace orvane {

/// Who may read a file that is written.
enum class FileAccess {
    /// Its owner alone: 0600.
    Private,
    /// As the file that is replaced, or else as the system makes new files.
    Usual,
};

/// Whether a file is on the disk for good when it has been written.
enum class Durability {
    Flushed,
    /// It may be the old one after a power loss. Never a half-written one.
    Unflushed,
};

/// Writes a whole file under another name beside `path` and gives it that name, so that there is the old
/// content or the new one at any moment. A link is followed; what is no regular file, such as a pipe, is
/// written into. Throws FileError; nothing is left behind then. Waits for the disk: off the main thread.
void replaceFile(const QString &path, QByteArrayView content, FileAccess access,
                 Durability durability = Durability::Flushed);

} // namespace orvane

#pragma once

#include <QString>

#include <optional>

namespace orvane {

/// A lock on a file, held while this lives and given up however the process ends. It keeps out other
/// processes and other locks of this one, on the same machine.
class FileLock
{
public:
    /// None when another holds it; throws FileError when there can be no lock. Makes the file if it is not
    /// there, for its owner alone; it stays there afterwards.
    [[nodiscard]] static std::optional<FileLock> tryLock(const QString &path);

    /// Of a folder that is there, against others who lock it so: without it what is in there can be changed
    /// all the same. Waits a moment for another to give it up; none after that, and where there can be none.
    [[nodiscard]] static std::optional<FileLock> ofFolder(const QString &path);

    FileLock(FileLock &&other) noexcept;
    FileLock &operator=(FileLock &&other) noexcept;
    FileLock(const FileLock &) = delete;
    FileLock &operator=(const FileLock &) = delete;
    ~FileLock();

private:
    explicit FileLock(int descriptor) : m_descriptor(descriptor) {}

    int m_descriptor;
};

} // namespace orvane

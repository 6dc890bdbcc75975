#pragma once

#include <QFile>
#include <QString>

#include <span>

namespace orvane {

/// The ".part" file of one download. While it is open no other process or PartFile can open it: the
/// lock is on the file itself, so it goes with the process that held it, however that ends.
/// Throws DownloadError when the disk refuses. One thread at a time.
class PartFile
{
public:
    /// Opens the file; makes it, and its folder, when it is not there. Throws AlreadyRunning when
    /// another has it.
    explicit PartFile(const QString &path);

    /// Where the partial file and the resume record of a destination lie.
    [[nodiscard]] static QString pathFor(const QString &destination);
    [[nodiscard]] static QString metaPathFor(const QString &destination);

    /// Where a record is written before it takes the place of the last one.
    [[nodiscard]] static QString draftOf(const QString &metaPath);
    static void removeRecord(const QString &destination);

    /// Removes the partial file and the record of a destination, unless another is writing them.
    static void discard(const QString &destination);

    [[nodiscard]] qint64 size() const { return m_file.size(); }
    /// Bytes of the disk that the file has already: less than its size while parts are missing.
    [[nodiscard]] qint64 allocated() const;
    void clear();
    void write(qint64 offset, std::span<const char> bytes);

    /// Has the disk begin with what was written there, so that waiting for it in the end is short.
    void startFlush(qint64 offset, qint64 length);
    /// Returns when everything written is on the disk; false when it cannot be.
    [[nodiscard]] bool flush();

    /// Gives the complete file its final name, in place of what was there.
    void moveTo(const QString &destination);
    void remove();

private:
    [[noreturn]] void fail() const;

    QFile m_file;
};

} // namespace orvane

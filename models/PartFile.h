#pragma once

#include <QFile>
#include <QString>

#include <span>

namespace orvane {

/// The ".part" file of one download. While it is open no other process or PartFile can open it: the
/// lock is on the file itself, so it goes with the process that held it, however that ends.
/// Throws DownloadError when the disk refuses. One thread at a time, apart from flush().
class PartFile
{
public:
    /// Opens the file; makes it, and its folder, when it is not there. Throws AlreadyRunning when
    /// another has it.
    explicit PartFile(const QString &path);

    /// Where the partial file of a destination lies, its resume record, and the record of what of it is on
    /// the disk for good.
    [[nodiscard]] static QString pathFor(const QString &destination);
    [[nodiscard]] static QString metaPathFor(const QString &destination);
    [[nodiscard]] static QString checkpointPathFor(const QString &destination);
    static void removeRecords(const QString &destination);

    /// Removes the partial file and the records of a destination, unless another is writing them.
    static void discard(const QString &destination);

    [[nodiscard]] qint64 size() const { return m_file.size(); }
    /// Bytes of the disk that the file has already: less than its size while parts are missing.
    [[nodiscard]] qint64 allocated() const;
    /// Whether the file begins with these bytes.
    [[nodiscard]] bool beginsWith(const QByteArray &bytes);
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

#pragma once

#include "base/Error.h"

#include <QFile>
#include <QString>

#include <mutex>
#include <span>

namespace orvane {

/// Writes a mono 16-bit PCM WAV file piece by piece. Until finalize() the header says 0 bytes, so a
/// recording that was cut off keeps its samples. append() and finalize() may be called on any thread.
class WavFileWriter
{
public:
    /// The file was finalized, but some samples are not in it.
    class WavWriteError : public Error
    {
    public:
        enum class Kind { incomplete };

        explicit WavWriteError(Kind kind);
        [[nodiscard]] Kind kind() const { return m_kind; }

    private:
        Kind m_kind;
    };

    /// In front of the samples.
    static constexpr quint32 headerBytes = 44;
    /// Bytes of samples that fit: with them the 32-bit sizes of the header are at their end.
    static constexpr quint64 maxDataBytes = 4'294'967'251;

    /// Creates the file, readable by its owner only, or empties it. Throws FileError.
    WavFileWriter(const QString &path, quint32 sampleRate);
    Q_DISABLE_COPY_MOVE(WavFileWriter)

    /// Adds samples in −1…1; what lies outside is clipped, NaN becomes silence. Needs 2 bytes of memory
    /// per sample, throws bad_alloc without and adds none of them. Never fails else: finalize() tells whether
    /// samples were lost. Ignored after finalize().
    void append(std::span<const float> samples);

    /// Waits until what was appended so far is on the disk. Never fails: the system says only once that it
    /// lost some of it, so from then on finalize() says that samples were lost.
    void sync();

    /// Writes the sizes into the header and closes the file. Throws FileError, or WavWriteError when the
    /// file is good but lacks samples. Closed in every case; a second call does nothing.
    void finalize();

    /// Gives a mono 16-bit file that was cut off the header of a finalized one and returns the bytes of its
    /// samples; a file that has it already is not touched. Throws FileError.
    [[nodiscard]] static quint64 repair(const QString &path, quint32 sampleRate);

private:
    void write(std::span<const char> block);

    const quint32 m_sampleRate;
    std::mutex m_lock; // guards everything below
    QFile m_file;
    quint64 m_dataBytes = 0;
    bool m_closed = false;
    bool m_writeFailed = false;
};

/// Appends in pieces, so that a long recording is not held twice in memory.
void appendInPieces(WavFileWriter &writer, std::span<const float> samples);

} // namespace orvane

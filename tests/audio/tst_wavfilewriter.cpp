#include "audio/SampleRate.h"
#include "audio/WavFileWriter.h"
#include "base/files/FileError.h"
#include "tests/support/Files.h"
#include "tests/support/FullDisk.h"

#include <QFileInfo>
#include <QTemporaryDir>
#include <QTest>
#include <QtEndian>

#include <atomic>
#include <cerrno>
#include <cmath>
#include <limits>
#include <thread>
#include <vector>

#include <sys/syscall.h>
#include <unistd.h>

using namespace Qt::StringLiterals;
using namespace orvane;
using namespace orvane::test;

namespace {

constexpr qint64 headerBytes = 44;

std::atomic<bool> s_syncFails = false;
std::atomic<bool> s_writesHoles = false;

quint32 number(const QByteArray &header, qsizetype offset)
{
    return qFromLittleEndian<quint32>(header.constData() + offset);
}

QList<int> samplesOf(const QByteArray &bytes)
{
    QList<int> samples;
    for (qsizetype offset = headerBytes; offset < bytes.size(); offset += 2)
        samples.append(qFromLittleEndian<qint16>(bytes.constData() + offset));
    return samples;
}

bool isIncomplete(WavFileWriter &writer)
{
    try {
        writer.finalize();
    } catch (const WavFileWriter::WavWriteError &error) {
        return error.kind() == WavFileWriter::WavWriteError::Kind::incomplete &&
               !error.description().isEmpty();
    }
    return false;
}

} // namespace

// Takes the place of the C library's function in this program.
extern "C" int fdatasync(int fildes)
{
    if (!s_syncFails)
        return int(syscall(SYS_fdatasync, fildes));
    errno = EIO;
    return -1;
}

extern "C" ssize_t write(int fd, const void *buf, size_t n)
{
    if (!s_writesHoles || n <= size_t(headerBytes))
        return syscall(SYS_write, fd, buf, n);
    return lseek(fd, off_t(n), SEEK_CUR) < 0 ? -1 : ssize_t(n);
}

class TestWavFileWriter : public QObject
{
    Q_OBJECT

    const QTemporaryDir m_folder;
    [[nodiscard]] QString path() const
    {
        return m_folder.filePath(QString::fromLatin1(QTest::currentTestFunction()) + u".wav"_s);
    }

private Q_SLOTS:
    void emptyFileIsItsHeader()
    {
        WavFileWriter writer(path(), 48000);
        writer.append({});
        writer.finalize();
        QCOMPARE(contentOf(path()).toHex(' '),
                 QByteArray("52 49 46 46 24 00 00 00 57 41 56 45 66 6d 74 20 10 00 00 00 01 00 01 00 "
                            "80 bb 00 00 00 77 01 00 02 00 10 00 64 61 74 61 00 00 00 00"));
    }

    void converts()
    {
        const float infinity = std::numeric_limits<float>::infinity();
        // Long enough for the compiler's vectors, with a rest.
        const std::vector<float> samples = {1.5F,  1.0F,     0.5F,      -0.5F,    -1.0F,     -2.0F,
                                            0.0F,  -0.0F,    NAN,       infinity, -infinity, -NAN,
                                            1e-9F, 0.99999F, -0.99999F, 0.00003F, -0.00004F};
        WavFileWriter writer(path(), sampleRate);
        writer.append(samples);
        writer.finalize();
        const QByteArray bytes = contentOf(path());
        QCOMPARE(samplesOf(bytes), (QList<int>{32767, 32767, 16383, -16383, -32767, -32767, 0, 0, 0, 32767,
                                               -32767, 0, 0, 32766, -32766, 0, -1}));
        QCOMPARE(number(bytes, 4), quint32(36 + 2 * samples.size()));
        QCOMPARE(number(bytes, 40), quint32(2 * samples.size()));
    }

    void headerComesLast()
    {
        WavFileWriter writer(path(), sampleRate);
        writer.append(std::vector<float>(100, 0.25F));
        const QByteArray open = contentOf(path());
        QCOMPARE(open.size(), headerBytes + 200); // nothing waits in a buffer
        QCOMPARE(number(open, 40), 0U);
        writer.finalize();
        const QByteArray closed = contentOf(path());
        QCOMPARE(number(closed, 40), 200U);

        writer.append(std::vector<float>(100, 0.5F));
        writer.finalize();
        QCOMPARE(contentOf(path()), closed);
        QCOMPARE(QFileInfo(path()).permissions() &
                     (QFile::ReadGroup | QFile::WriteGroup | QFile::ReadOther | QFile::WriteOther),
                 QFile::Permissions());
    }

    void cannotBeCreated()
    {
        QVERIFY_THROWS_EXCEPTION(FileError, WavFileWriter(m_folder.filePath(u"none/a.wav"_s), sampleRate));
        QVERIFY_THROWS_EXCEPTION(FileError,
                                 WavFileWriter(u"/dev/full"_s, sampleRate)); // no room for the header
    }

    void fullDisk()
    {
        WavFileWriter writer(path(), sampleRate);
        writer.append(std::vector<float>(100, 0.25F));
        {
            const auto full = limitFileSize(headerBytes + 200 + 101); // amid a sample of the next block
            writer.append(std::vector<float>(100, 0.5F));
        }
        writer.append(std::vector<float>(10, 0.75F));
        QVERIFY(isIncomplete(writer));
        const QByteArray bytes = contentOf(path());
        QCOMPARE(samplesOf(bytes), QList<int>(100, 8191) + QList<int>(10, 24575));
        QCOMPARE(number(bytes, 40), 220U);
        QCOMPARE(number(bytes, 4), 256U);
        writer.finalize(); // reported once
    }

    void failedSyncIsALoss()
    {
        WavFileWriter writer(path(), sampleRate);
        writer.append(std::vector<float>(100, 0.25F));
        s_syncFails = true;
        writer.sync();
        s_syncFails = false;
        writer.append(std::vector<float>(100, 0.25F));
        writer.sync(); // the system says it once only
        QVERIFY(isIncomplete(writer));
        QCOMPARE(samplesOf(contentOf(path())), QList<int>(200, 8191));
    }

    void endsAtFourGiB()
    {
        constexpr quint32 most = WavFileWriter::maxDataBytes / 2 * 2;
        const std::vector<float> block(1 << 21);
        WavFileWriter writer(path(), sampleRate);
        s_writesHoles = true;
        for (size_t left = most / 2; left > 0; left -= std::min(left, block.size()))
            writer.append(std::span(block).first(std::min(left, block.size())));
        writer.append(std::span(block).first(1));
        s_writesHoles = false;
        QVERIFY(isIncomplete(writer));
        QFile file(path());
        QVERIFY(file.open(QFile::ReadOnly));
        QCOMPARE(file.size(), headerBytes + most);
        const QByteArray bytes = file.read(headerBytes);
        QCOMPARE(number(bytes, 40), most);
        QCOMPARE(number(bytes, 4), 36 + most);
        QCOMPARE(WavFileWriter::repair(path(), sampleRate), quint64(most));
        QVERIFY(file.remove());
    }

    void longRecordingsGoInPieces()
    {
        std::vector<float> samples(1'000'003);
        for (size_t index = 0; index < samples.size(); ++index)
            samples[index] = float(index % 2000) / 1000.0F - 1.0F;
        WavFileWriter whole(path(), sampleRate);
        whole.append(samples);
        const QString other = m_folder.filePath(u"pieces.wav"_s);
        WavFileWriter pieces(other, sampleRate);
        appendInPieces(pieces, samples);
        QCOMPARE(contentOf(path()).size(), headerBytes + 2'000'006);
        QVERIFY(contentOf(other) == contentOf(path()));
    }

    void blocksOfManyThreadsStayWhole()
    {
        constexpr int threadCount = 4;
        constexpr int blocks = 200;
        constexpr int blockSize = 160;
        WavFileWriter writer(path(), sampleRate);
        {
            std::vector<std::jthread> threads;
            for (int thread = 1; thread <= threadCount; ++thread) {
                threads.emplace_back([&writer, block = std::vector<float>(blockSize, float(thread) / 8)] {
                    for (int count = 0; count < blocks; ++count)
                        writer.append(block);
                });
            }
        }
        const QList<int> samples = samplesOf(contentOf(path()));
        QCOMPARE(samples.size(), threadCount * blocks * blockSize);
        QMap<int, int> found;
        for (qsizetype start = 0; start < samples.size(); start += blockSize) {
            QCOMPARE(samples.sliced(start, blockSize).count(samples[start]), blockSize);
            ++found[samples[start]];
        }
        QCOMPARE(found.values(), QList<int>(threadCount, blocks));
    }
};

QTEST_GUILESS_MAIN(TestWavFileWriter)
#include "tst_wavfilewriter.moc"

#include "audio/WavFileWriter.h"

#include "base/files/FileControl.h"
#include "base/files/FileError.h"
#include "base/files/PrivateFile.h"
#include "base/localization/Localization.h"

#include <QtEndian>

#include <algorithm>
#include <array>
#include <cstring>
#include <memory>

using namespace Qt::StringLiterals;

namespace orvane {

namespace {

constexpr quint32 headerBytes = WavFileWriter::headerBytes;
constexpr size_t pieceSamples = 1 << 18;

// Without a branch, so that the compiler converts several samples at once.
qint16 pcm(float sample)
{
    const float clipped = std::max(-1.0F, std::min(sample, 1.0F));
    const float number = sample == sample ? clipped : 0.0F;
    return qToLittleEndian(static_cast<qint16>(number * 32767.0F));
}

std::array<char, headerBytes> header(quint32 sampleRate, quint32 dataBytes)
{
    std::array<char, headerBytes> bytes{};
    char *next = bytes.data();
    const auto put = [&next](auto number) {
        qToLittleEndian(number, next);
        next += sizeof(number);
    };
    const auto putTag = [&next](const char *tag) {
        std::memcpy(next, tag, 4);
        next += 4;
    };
    putTag("RIFF");
    put(quint32(dataBytes + headerBytes - 8));
    putTag("WAVE");
    putTag("fmt ");
    put(quint32(16)); // size of the format chunk
    put(quint16(1));  // PCM
    put(quint16(1));  // channels
    put(sampleRate);
    put(quint32(sampleRate * 2)); // bytes per second
    put(quint16(2));              // bytes per frame
    put(quint16(16));             // bits per sample
    putTag("data");
    put(dataBytes);
    return bytes;
}

} // namespace

WavFileWriter::WavWriteError::WavWriteError(Kind kind)
    : Error(Localization::text(u"Не вся запись поместилась в звуковой файл.")),
      m_kind(kind)
{}

WavFileWriter::WavFileWriter(const QString &path, quint32 sampleRate) : m_sampleRate(sampleRate), m_file(path)
{
    // Unbuffered: a block is one write, and a full disk shows at once.
    const auto mode = QFile::WriteOnly | QFile::Truncate | QFile::Unbuffered;
    if (!m_file.open(mode, privateFile))
        throw FileError::notWritten(m_file);
    const auto bytes = header(m_sampleRate, 0);
    if (m_file.write(bytes.data(), bytes.size()) != qint64(bytes.size()))
        throw FileError::notWritten(m_file);
}

void WavFileWriter::append(std::span<const float> samples)
{
    if (samples.empty())
        return;
    const auto block = std::make_unique_for_overwrite<qint16[]>(samples.size());
    std::ranges::transform(samples, block.get(), pcm);
    write({reinterpret_cast<const char *>(block.get()), samples.size() * sizeof(qint16)});
}

void WavFileWriter::write(std::span<const char> block)
{
    const std::scoped_lock locked(m_lock);
    if (m_closed)
        return;
    if (m_dataBytes + block.size() > maxDataBytes) {
        m_writeFailed = true;
        return;
    }
    if (m_file.write(block.data(), qint64(block.size())) == qint64(block.size())) {
        m_dataBytes += block.size();
        return;
    }
    m_writeFailed = true;
    // A part of the block may be there: the next one takes its place.
    m_file.seek(qint64(headerBytes + m_dataBytes));
}

void WavFileWriter::sync()
{
    const std::scoped_lock locked(m_lock);
    if (!m_closed && !FileControl::flush(m_file.handle()))
        m_writeFailed = true;
}

void WavFileWriter::finalize()
{
    const std::scoped_lock locked(m_lock);
    if (m_closed)
        return;
    m_closed = true;
    const auto bytes = header(m_sampleRate, quint32(std::min(m_dataBytes, maxDataBytes)));
    const bool whole = !m_writeFailed || m_file.resize(qint64(headerBytes + m_dataBytes));
    const bool patched = m_file.seek(0) && m_file.write(bytes.data(), bytes.size()) == qint64(bytes.size());
    const FileError failure = FileError::notWritten(m_file);
    if (!whole || !patched) {
        m_file.close();
        throw failure;
    }
    m_file.close();
    if (m_file.error() != QFile::NoError)
        throw FileError::notWritten(m_file);
    if (m_writeFailed)
        throw WavWriteError(WavWriteError::Kind::incomplete);
}

quint64 WavFileWriter::repair(const QString &path, quint32 sampleRate)
{
    QFile file(path);
    if (!file.open(QFile::ReadWrite | QFile::ExistingOnly | QFile::Unbuffered))
        throw FileError::notWritten(file);
    const quint64 beyondHeader = quint64(std::max(file.size() - qint64(headerBytes), qint64(0)));
    const quint64 dataBytes = std::min(beyondHeader, maxDataBytes) / sizeof(qint16) * sizeof(qint16);
    const auto bytes = header(sampleRate, quint32(dataBytes));
    const QByteArrayView whole(bytes.data(), qsizetype(bytes.size()));
    if (file.read(whole.size()) == whole)
        return dataBytes;
    if (!file.seek(0) || file.write(whole.data(), whole.size()) != whole.size() ||
        !FileControl::flush(file.handle()))
        throw FileError::notWritten(file);
    return dataBytes;
}

void appendInPieces(WavFileWriter &writer, std::span<const float> samples)
{
    for (; !samples.empty(); samples = samples.subspan(std::min(pieceSamples, samples.size())))
        writer.append(samples.first(std::min(pieceSamples, samples.size())));
}

} // namespace orvane

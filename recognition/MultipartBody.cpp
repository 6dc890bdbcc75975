#include "recognition/MultipartBody.h"

#include "base/files/FileError.h"

#include <algorithm>

namespace orvane {

namespace {

qint64 copyPart(const QByteArray &part, qint64 from, char *data, qint64 maxSize)
{
    const qint64 size = std::min(maxSize, part.size() - from);
    std::copy_n(part.cbegin() + from, size, data);
    return size;
}

} // namespace

MultipartBody::MultipartBody(const QByteArray &boundary, const Fields &fields, const QString &audioPath,
                             std::stop_source unreadable)
    : m_audio(audioPath),
      m_unreadable(std::move(unreadable))
{
    if (!m_audio.open(ReadOnly | Unbuffered))
        throw FileError::notRead(m_audio);
    m_audioSize = m_audio.size();
    const QByteArray delimiter = "--" + boundary;
    for (const auto &[name, value] : fields)
        m_head +=
            delimiter + "\r\nContent-Disposition: form-data; name=\"" + name + "\"\r\n\r\n" + value + "\r\n";
    m_head += delimiter + "\r\nContent-Disposition: form-data; name=\"file\"; filename=\"audio.wav\"\r\n"
                          "Content-Type: audio/wav\r\n\r\n";
    m_tail = "\r\n" + delimiter + "--\r\n";
    open(ReadOnly | Unbuffered);
}

qint64 MultipartBody::readData(char *data, qint64 maxSize)
{
    const qint64 at = pos();
    const qint64 audioEnd = m_head.size() + m_audioSize;
    if (at < m_head.size())
        return copyPart(m_head, at, data, maxSize);
    if (at >= audioEnd)
        return copyPart(m_tail, at - audioEnd, data, maxSize);
    const qint64 size = m_audio.read(data, std::min(maxSize, audioEnd - at));
    if (size > 0)
        return size;
    // From the event loop: the request cannot be ended in the middle of its own reading.
    QMetaObject::invokeMethod(
        this, [unreadable = m_unreadable]() mutable { unreadable.request_stop(); }, Qt::QueuedConnection);
    return -1;
}

} // namespace orvane

#include "recognition/MultipartBody.h"

#include "base/files/FileError.h"

#include <QFile>

namespace orvane {

namespace {

constexpr qint64 pieceSize = 1024 * 1024;

void write(QFile &body, const QByteArray &bytes)
{
    // On a full disk the first write may take a part; only the next one knows why.
    for (qint64 done = 0; done < bytes.size();) {
        const qint64 size = body.write(bytes.constData() + done, bytes.size() - done);
        if (size <= 0)
            throw FileError::notWritten(body);
        done += size;
    }
}

void copyAudio(QFile &body, const QString &audioPath, const std::stop_token &stop)
{
    QFile audio(audioPath);
    if (!audio.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
        throw FileError::notRead(audio);
    QByteArray piece(pieceSize, Qt::Uninitialized);
    while (true) {
        throwIfCancelled(stop);
        const qint64 size = audio.read(piece.data(), pieceSize);
        if (size < 0)
            throw FileError::notRead(audio);
        if (size == 0)
            return;
        write(body, QByteArray::fromRawData(piece.constData(), size));
    }
}

} // namespace

void MultipartBody::writeTo(const QString &path, const std::stop_token &stop) const
{
    QFile body(path);
    if (!body.open(QIODevice::WriteOnly | QIODevice::NewOnly | QIODevice::Unbuffered,
                   QFileDevice::ReadOwner | QFileDevice::WriteOwner))
        throw FileError::notWritten(body);
    try {
        const QByteArray delimiter = "--" + boundary;
        for (const auto &[name, value] : fields) {
            write(body, delimiter + "\r\nContent-Disposition: form-data; name=\"" + name + "\"\r\n\r\n" +
                            value + "\r\n");
        }
        write(body, delimiter +
                        "\r\nContent-Disposition: form-data; name=\"file\"; filename=\"audio.wav\"\r\n"
                        "Content-Type: audio/wav\r\n\r\n");
        copyAudio(body, audioPath, stop);
        write(body, "\r\n" + delimiter + "--\r\n");
    } catch (const Error &) {
        body.remove();
        throw;
    }
}

} // namespace orvane

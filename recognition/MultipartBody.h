#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

#include <stop_token>
#include <utility>

namespace orvane {

/// A multipart/form-data request body with text fields and one audio file, which every server sees
/// as "audio.wav". Written to a file, so that a recording of hours never sits in memory.
struct MultipartBody
{
    /// Names the header "multipart/form-data; boundary=…" too.
    QByteArray boundary;
    QList<std::pair<QByteArray, QByteArray>> fields;
    QString audioPath;

    /// Writes the body, with the audio copied in pieces of 1 MiB. Throws FileError, or Cancelled
    /// when stop is requested; nothing is left behind then. Blocks: any thread but the main one.
    void writeTo(const QString &path, const std::stop_token &stop = {}) const;
};

} // namespace orvane

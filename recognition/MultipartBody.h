#pragma once

#include "engine/OneTimeBody.h"

#include <QByteArray>
#include <QFile>
#include <QList>

#include <stop_token>
#include <utility>

namespace orvane {

/// A multipart/form-data request body with text fields and one audio file, which every server sees as
/// "audio.wav". The file is read while it is sent, so that a recording of hours is never copied.
class MultipartBody : public OneTimeBody<QIODevice>
{
public:
    using Fields = QList<std::pair<QByteArray, QByteArray>>;

    /// The boundary names the header "multipart/form-data; boundary=…" too. Opens the file; throws FileError.
    /// When the file cannot be read to its end later on, `unreadable` is stopped.
    MultipartBody(const QByteArray &boundary, const Fields &fields, const QString &audioPath,
                  std::stop_source unreadable);

    [[nodiscard]] qint64 size() const override { return m_head.size() + m_audioSize + m_tail.size(); }

protected:
    qint64 readData(char *data, qint64 maxSize) override;
    qint64 writeData(const char *, qint64) override { return -1; }

private:
    QByteArray m_head;
    QFile m_audio;
    qint64 m_audioSize = 0;
    QByteArray m_tail;
    const std::stop_source m_unreadable;
};

} // namespace orvane

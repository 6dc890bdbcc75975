#pragma once

#include "audio/decoding/AudioDecoderModule.h"

#include <QByteArray>
#include <QString>

#include <stop_token>

namespace orvane {

/// A local file that the decoder reads. One thread at a time.
class MediaFile final : public MediaSource
{
public:
    /// Throws AudioDecoderError (couldNotOpen) unless it is a regular file that can be read and is not
    /// empty.
    MediaFile(const QString &path, std::stop_token stop);
    ~MediaFile();
    Q_DISABLE_COPY_MOVE(MediaFile)

    std::int64_t read(std::int64_t position, std::byte *buffer, std::int64_t size) noexcept override;
    [[nodiscard]] std::int64_t size() const noexcept override { return m_size; }
    [[nodiscard]] const char *suffix() const noexcept override { return m_suffix.constData(); }
    [[nodiscard]] bool isCancelled() const noexcept override { return m_stop.stop_requested(); }

    /// Whether the system refused to read on at some place.
    [[nodiscard]] bool hasFailed() const { return m_failed; }

private:
    void requireContent();

    const QByteArray m_suffix;
    const std::stop_token m_stop;
    const int m_descriptor;
    std::int64_t m_size = 0;
    bool m_failed = false;
};

} // namespace orvane

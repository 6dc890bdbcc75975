#pragma once

#include <QByteArray>
#include <QString>

namespace orvane {

/// A request to the speech engine as the program sent it, to send it again.
class KeptRequest
{
public:
    /// Of the program whose temporary files lie in `folder`; `path` lies in the same file system.
    KeptRequest(const QString &folder, const QString &path);
    /// Forgets it.
    ~KeptRequest();
    Q_DISABLE_COPY_MOVE(KeptRequest)

    /// Keeps the request once there is one, without a delay for the program. Polled.
    void look();

    /// Milliseconds of its recording.
    [[nodiscard]] double recordedTime() const;
    /// Milliseconds until the engine at that address has answered it to curl.
    [[nodiscard]] double timeOfCurl(const QString &address) const;

private:
    [[nodiscard]] QByteArray content() const;

    const QString m_folder;
    const QString m_path;
};

} // namespace orvane

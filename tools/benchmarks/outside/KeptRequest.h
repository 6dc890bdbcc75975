#pragma once

#include <QString>

namespace orvane {

/// The recording that the program sent to the speech engine, to send it again.
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
    [[nodiscard]] QString path() const { return m_path; }

private:
    const QString m_folder;
    const QString m_path;
};

/// Milliseconds until the engine at that address has answered curl, which sends it the whole recording as the
/// program would.
[[nodiscard]] double timeOfCurl(const QString &recording, const QString &address);

} // namespace orvane

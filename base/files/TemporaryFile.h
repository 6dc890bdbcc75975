#pragma once

#include <QString>

namespace orvane {

/// The name of a private file that ends with this object. Only reserves a unique name in the folder;
/// whoever writes creates the file. It is deleted on a pool thread, because deleting a long recording
/// takes longer than a frame; the program's end waits for that.
class TemporaryFile
{
public:
    /// The file "<folder>/<prefix><UUID><suffix>".
    TemporaryFile(const QString &folder, const QString &prefix, const QString &suffix);
    ~TemporaryFile();
    Q_DISABLE_COPY_MOVE(TemporaryFile)

    [[nodiscard]] QString path() const { return m_path; }

private:
    const QString m_path;
};

} // namespace orvane

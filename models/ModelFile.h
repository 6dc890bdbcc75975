#pragma once

#include <QFileInfo>
#include <QString>

namespace orvane {

/// A recognition model as an engine gets it: the id that records carry, and the file.
struct ModelFile
{
    QString id;
    QString path;

    /// A model outside the catalogue; its id is the file's base name.
    [[nodiscard]] static ModelFile atPath(const QString &path)
    {
        const QFileInfo file(path);
        return {.id = file.completeBaseName(), .path = file.absoluteFilePath()};
    }
};

} // namespace orvane

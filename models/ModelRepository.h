#pragma once

#include "models/DownloadSession.h"

#include <QString>
#include <QUrl>

namespace orvane {

/// Where models come from.
struct ModelRepository
{
    /// Scheme and host, such as "https://models.example.org"; empty when nothing says where.
    QString address;
    DownloadOptions options;

    [[nodiscard]] static ModelRepository ofBuild();
    /// What the user has typed as an address: https unless it says otherwise, and no slash at the end.
    [[nodiscard]] static QString addressFrom(const QString &typed);

    /// Of a file there, whose path begins with a slash. Throws DownloadError when the address is none.
    [[nodiscard]] QUrl urlOf(const QString &path) const;
};

} // namespace orvane

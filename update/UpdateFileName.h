#pragma once

#include <QByteArray>
#include <QString>
#include <QUrl>

namespace orvane {

/// What a downloaded update is called: as its Content-Disposition header says, else as the last piece of its
/// address, else "Orvane-VERSION" with the suffix of a package. One piece of a path that stays in its folder
/// and shows as what it is, without invisible characters and leading dots.
[[nodiscard]] QString updateFileName(const QByteArray &contentDisposition, const QUrl &url,
                                     const QString &version);

} // namespace orvane

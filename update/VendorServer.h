#pragma once

#include <QString>
#include <QUrl>

namespace orvane {

/// Whether it is an address that a file or an answer can be fetched from: http or https, with a host.
[[nodiscard]] bool isWebAddress(const QUrl &url);

/// The address of a path, such as "/api/version", on a server given by scheme and host. Empty when that
/// is not a web address, as in a build without a server.
[[nodiscard]] QUrl vendorAddress(const QString &server, const QString &path);

} // namespace orvane

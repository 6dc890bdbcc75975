#pragma once

#include <QByteArray>
#include <QString>
#include <QUrl>

/// What a downloaded update is called.
namespace orvane::UpdateFileName {

/// The name that the answer suggests: that of its Content-Disposition header (RFC 6266, with the encoded
/// form before the plain one), else the last piece of its address, else "Orvane-VERSION" with the
/// suffix of a package. Always a safe() name.
[[nodiscard]] QString suggested(const QByteArray &contentDisposition, const QUrl &url,
                                const QString &version);

/// A name that stays in the folder it is put in and shows as what it is: only what follows the last slash
/// or backslash, without control and invisible characters, leading dots and blanks around it, of at most
/// 200 bytes in UTF-8 with its suffix kept. Empty when nothing is left.
[[nodiscard]] QString safe(const QString &name);

} // namespace orvane::UpdateFileName

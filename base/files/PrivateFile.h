#pragma once

#include <QByteArray>
#include <QFileDevice>
#include <QString>

namespace orvane {

/// What a file of which others may know nothing is made with: 0600.
inline constexpr QFileDevice::Permissions privateFile = QFileDevice::ReadOwner | QFileDevice::WriteOwner;

/// Leaves a file or folder (its path as the system encodes it) to its owner alone: 0600 or, for a folder,
/// 0700. Failures are ignored.
void makePrivate(const QByteArray &path);

/// Makes the folder, with those it lies in, unless it is there, and leaves it to its owner alone. Failures
/// are ignored.
void makePrivateFolder(const QString &path);

} // namespace orvane

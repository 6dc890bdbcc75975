#pragma once

#include "models/DownloadState.h"

#include <QByteArray>
#include <QString>

#include <stop_token>

/// A model's file that the user has got elsewhere. Waits for the disk: off the main thread.
namespace orvane::ModelImport {

/// Of the file, as many bytes as tell which model it holds. Throws FileError.
[[nodiscard]] QByteArray beginningOf(const QString &path);

/// Copies the file to the name of a model, in place of what is there and of what an interrupted download has
/// left. Throws FileError, DownloadError, or Cancelled soon after a stop request; nothing is left then.
void copy(const QString &from, const QString &to, const DownloadState::Report &report,
          const std::stop_token &stop);

} // namespace orvane::ModelImport

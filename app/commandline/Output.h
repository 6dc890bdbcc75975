#pragma once

#include <QByteArray>
#include <QString>

/// Where a command's results and complaints go.
namespace orvane::Output {

/// Names standard output where a file is asked for.
inline constexpr QStringView standardOutput = u"-";

/// Puts something harmless in the place of a standard stream that is closed. Otherwise the next file that
/// is opened would take the place, and results or complaints would be written into it. Before anything else.
void reserveStandardStreams();

/// Writes results to standard output. Throws Error when not all could be written.
void write(const QByteArray &bytes);

/// Writes results to a file, which is replaced in one step or not at all, or to standard output for "-",
/// where a terminal gets a line feed at the end. Throws Error.
void write(const QByteArray &bytes, const QString &destination);

/// Throws Error when a result could not be written to this file, folder, device or "-", so that nothing is
/// worked out in vain.
void requireWritable(const QString &destination);

/// Writes one line to standard error.
void complain(const QString &sentence);

} // namespace orvane::Output

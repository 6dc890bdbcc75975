#pragma once

#include <QString>

#include <QCoroTask>

#include <stop_token>

/// Where a command reads the text that it works on.
namespace orvane::TextInput {

/// The text of a file, a pipe or, for "-", of standard input, which may take as long as somebody writes it.
/// Throws Error when there is none: what cannot be read, is empty, is not in UTF-8 or is too large. Throws
/// Cancelled when it is stopped.
[[nodiscard]] QCoro::Task<QString> read(QString source, std::stop_token stop);

} // namespace orvane::TextInput

#pragma once

#include "base/Error.h"

class QFileDevice;

namespace orvane {

/// A file could not be read or written; the description names the file and the reason.
class FileError : public Error
{
public:
    /// `error` is an errno of the system.
    [[nodiscard]] static FileError notRead(const QString &path, int error);
    [[nodiscard]] static FileError notWritten(const QString &path, int error);

    /// The same right after the file's own function has failed.
    [[nodiscard]] static FileError notRead(const QFileDevice &file);
    [[nodiscard]] static FileError notWritten(const QFileDevice &file);

    /// What an errno means, as a piece of a sentence in the interface language.
    [[nodiscard]] static QString reason(int error);
    /// The same of this error's, for a sentence of another kind.
    [[nodiscard]] QString reason() const { return reason(m_error); }

private:
    FileError(const QString &description, int error) : Error(description), m_error(error) {}

    int m_error;
};

} // namespace orvane

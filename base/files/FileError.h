#pragma once

#include "base/Error.h"

class QFileDevice;

namespace orvane {

/// A file could not be read or written; the description names the file and the system's reason.
class FileError : public Error
{
public:
    [[nodiscard]] static FileError notRead(const QFileDevice &file);
    [[nodiscard]] static FileError notWritten(const QFileDevice &file);

private:
    using Error::Error;
};

} // namespace orvane

#pragma once

#include "base/Error.h"

namespace orvane {

/// Why the server's answer, or the file that it offers, could not be had.
class UpdateError : public Error
{
public:
    enum class Kind {
        ServerNotFound,
        NotSecure,       ///< no trust in the server, or a redirect from https to http
        NoAnswer,        ///< the server or the connection to it went silent, or it was too slow
        ConnectionBroke, ///< refused, or broken off in the middle
        BadStatus,       ///< an answer outside 200–299
        InsecurePackage, ///< offered at an http address by a server that is asked over https
        TooLarge,        ///< an answer longer than anything the server should say
        NotWritable,     ///< the disk is full, the folder refuses, or the name is taken by a folder
    };

    [[nodiscard]] static UpdateError serverNotFound();
    [[nodiscard]] static UpdateError notSecure();
    [[nodiscard]] static UpdateError noAnswer();
    [[nodiscard]] static UpdateError connectionBroke();
    [[nodiscard]] static UpdateError badStatus(int status);
    [[nodiscard]] static UpdateError insecurePackage();
    [[nodiscard]] static UpdateError tooLarge();
    [[nodiscard]] static UpdateError notWritable(const QString &folder);

    [[nodiscard]] Kind kind() const { return m_kind; }

private:
    UpdateError(Kind kind, const QString &description) : Error(description), m_kind(kind) {}

    Kind m_kind;
};

} // namespace orvane

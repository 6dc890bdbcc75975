#pragma once

#include "base/Error.h"

namespace orvane {

/// Why a model file could not be downloaded, as one sentence for the user. Unless said otherwise the
/// partial file and its record stay, so that the next attempt goes on from them.
class DownloadError : public Error
{
public:
    enum class Kind {
        BadStatus,        ///< the server answered with something other than the file
        Truncated,        ///< fewer bytes arrived than the file has
        CorruptFile,      ///< the whole file is not a model; it was deleted
        BadServerAnswer,  ///< the server does not say what it would send
        FileChanged,      ///< a part of another file, or another part, than the one asked for
        HostUnreachable,  ///< there is no way to the server, as without a network
        ConnectionFailed, ///< no answer, or it broke off
        NotEnoughSpace,
        NotWritable,
        AlreadyRunning, ///< another process, or another downloader, is writing the same file
        NoRepository,   ///< nothing says where models are, or something that has none
        UnknownModel,   ///< the user's own file is none of the catalogue's
    };

    [[nodiscard]] static DownloadError badStatus(int code);
    /// Both in bytes.
    [[nodiscard]] static DownloadError truncated(qint64 received, qint64 expected);
    [[nodiscard]] static DownloadError corruptFile();
    [[nodiscard]] static DownloadError badServerAnswer();
    [[nodiscard]] static DownloadError fileChanged();
    /// `reason` is a sentence in the interface language.
    [[nodiscard]] static DownloadError connectionFailed(const QString &reason);
    [[nodiscard]] static DownloadError hostUnreachable(const QString &reason);
    /// Before the first byte; both in bytes.
    [[nodiscard]] static DownloadError notEnoughSpace(qint64 needed, qint64 available);
    /// In the middle.
    [[nodiscard]] static DownloadError diskFull();
    /// `error` is an errno of the system.
    [[nodiscard]] static DownloadError notWritable(const QString &folder, int error);
    [[nodiscard]] static DownloadError alreadyRunning();
    [[nodiscard]] static DownloadError noRepository();
    [[nodiscard]] static DownloadError badRepository(const QString &address);
    /// What comes from there could be changed on its way.
    [[nodiscard]] static DownloadError insecureRepository();
    /// It answers with something else where a model should be.
    [[nodiscard]] static DownloadError notARepository();

    /// Of the user's own file, by its name.
    [[nodiscard]] static DownloadError notAModel(const QString &file);
    /// `example` is a name that would be known.
    [[nodiscard]] static DownloadError unknownModel(const QString &file, const QString &example);

    [[nodiscard]] Kind kind() const { return m_kind; }

private:
    DownloadError(Kind kind, const QString &description) : Error(description), m_kind(kind) {}

    Kind m_kind;
};

} // namespace orvane

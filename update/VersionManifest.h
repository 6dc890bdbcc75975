#pragma once

#include "settings/BuildInfo.h"
#include "update/UpdateRelease.h"

#include <QByteArray>
#include <QString>
#include <QUrl>

#include <optional>

namespace orvane {

/// The server's answer: the newest release of each edition.
struct VersionManifest
{
    struct Entry
    {
        QString version;
        /// Not checked; only the entry that is used has to be an address.
        QString url;

        bool operator==(const Entry &) const = default;
    };

    Entry basic;
    Entry pro;

    /// What a server at `source` offers for an edition; none without an address to download it from. Throws
    /// UpdateError when that is less safe than the server itself.
    [[nodiscard]] std::optional<UpdateRelease> releaseFor(BuildInfo::Edition edition,
                                                          const QUrl &source) const;

    /// None unless both editions are there with both texts. Other members are ignored.
    [[nodiscard]] static std::optional<VersionManifest> fromJson(const QByteArray &json);
};

} // namespace orvane

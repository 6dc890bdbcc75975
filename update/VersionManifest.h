#pragma once

#include "settings/BuildInfo.h"

#include <QByteArray>
#include <QString>

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

    [[nodiscard]] const Entry &entryFor(BuildInfo::Edition edition) const;

    /// None unless both editions are there with both texts. Other members are ignored.
    [[nodiscard]] static std::optional<VersionManifest> fromJson(const QByteArray &json);
};

} // namespace orvane

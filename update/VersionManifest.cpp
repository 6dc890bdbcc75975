#include "update/VersionManifest.h"

#include "update/UpdateError.h"
#include "update/VendorServer.h"

#include <QJsonDocument>
#include <QJsonObject>

using namespace Qt::StringLiterals;

namespace orvane {

namespace {

std::optional<VersionManifest::Entry> entryFrom(const QJsonValue &json)
{
    const QJsonValue version = json[u"version"_s];
    const QJsonValue url = json[u"url"_s];
    if (!version.isString() || !url.isString())
        return std::nullopt;
    return VersionManifest::Entry{.version = version.toString(), .url = url.toString()};
}

} // namespace

std::optional<UpdateRelease> VersionManifest::releaseFor(BuildInfo::Edition edition, const QUrl &source) const
{
    const Entry &entry = edition == BuildInfo::Edition::Pro ? pro : basic;
    const QUrl url(entry.url, QUrl::StrictMode);
    if (!isWebAddress(url))
        return std::nullopt;
    if (source.scheme() == u"https" && url.scheme() != u"https")
        throw UpdateError::insecurePackage();
    return UpdateRelease{.version = entry.version, .url = url};
}

std::optional<VersionManifest> VersionManifest::fromJson(const QByteArray &json)
{
    const QJsonObject object = QJsonDocument::fromJson(json).object();
    const auto basic = entryFrom(object[u"basic"_s]);
    const auto pro = entryFrom(object[u"pro"_s]);
    if (!basic || !pro)
        return std::nullopt;
    return VersionManifest{.basic = *basic, .pro = *pro};
}

} // namespace orvane

#include "update/VersionManifest.h"

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

const VersionManifest::Entry &VersionManifest::entryFor(BuildInfo::Edition edition) const
{
    return edition == BuildInfo::Edition::Pro ? pro : basic;
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

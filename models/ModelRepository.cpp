#include "models/ModelRepository.h"

#include "models/DownloadError.h"
#include "settings/BuildInfo.h"

using namespace Qt::StringLiterals;

namespace orvane {

namespace {

QString withoutSlashes(QString address)
{
    while (address.endsWith(u'/'))
        address.chop(1);
    return address;
}

} // namespace

ModelRepository ModelRepository::ofBuild()
{
    return {.address = BuildInfo::modelRepository, .options = {}};
}

QString ModelRepository::addressFrom(const QString &typed)
{
    const QString address = withoutSlashes(typed.trimmed());
    return address.isEmpty() || address.contains(u"://"_s) ? address : u"https://"_s + address;
}

QUrl ModelRepository::urlOf(const QString &path) const
{
    const QString base = withoutSlashes(address);
    if (base.isEmpty())
        throw DownloadError::noRepository();
    const QUrl url(base + path);
    if ((url.scheme() != u"https" && url.scheme() != u"http") || url.host().isEmpty())
        throw DownloadError::badRepository(base);
    return url;
}

} // namespace orvane

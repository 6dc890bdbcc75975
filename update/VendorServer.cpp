#include "update/VendorServer.h"

using namespace Qt::StringLiterals;

namespace orvane {

bool isWebAddress(const QUrl &url)
{
    return url.isValid() && (url.scheme() == u"https"_s || url.scheme() == u"http"_s) &&
           !url.host().isEmpty();
}

QUrl vendorAddress(const QString &server, const QString &path)
{
    QUrl url(server, QUrl::StrictMode);
    if (!isWebAddress(url))
        return {};
    url.setPath(path);
    return url;
}

} // namespace orvane

#include "models/SystemProxy.h"

#include "base/system/Loopback.h"
#include "models/Curl.h"

#include <QNetworkProxyFactory>

using namespace Qt::StringLiterals;

namespace orvane::SystemProxy {

namespace {

QString scheme(QNetworkProxy::ProxyType type)
{
    return type == QNetworkProxy::Socks5Proxy ? u"socks5h"_s : u"http"_s;
}

} // namespace

void apply(CURL *handle, const QUrl &url)
{
    const QNetworkProxy proxy =
        isLoopback(url.host()) ? QNetworkProxy(QNetworkProxy::NoProxy)
                               : QNetworkProxyFactory::systemProxyForQuery(QNetworkProxyQuery(url)).value(0);
    if (proxy.hostName().isEmpty()) {
        curl().easy_setopt(handle, CURLOPT_PROXY, ""); // none, whatever the environment says
        return;
    }
    QUrl address;
    address.setScheme(scheme(proxy.type()));
    address.setHost(proxy.hostName());
    address.setPort(proxy.port());
    curl().easy_setopt(handle, CURLOPT_PROXY, address.toEncoded().constData());
    if (!proxy.user().isEmpty()) {
        curl().easy_setopt(handle, CURLOPT_PROXYUSERNAME, proxy.user().toUtf8().constData());
        curl().easy_setopt(handle, CURLOPT_PROXYPASSWORD, proxy.password().toUtf8().constData());
    }
}

} // namespace orvane::SystemProxy

#include "models/Curl.h"

#include "base/localization/Localization.h"
#include "models/DownloadError.h"

#include <QLibrary>

using namespace Qt::StringLiterals;

namespace orvane {

namespace {

/// Of the binary interface; the same since 2006.
constexpr int version = 4;

Curl loaded()
{
    QLibrary library(u"curl"_s, version);
    library.setLoadHints(QLibrary::PreventUnloadHint);
    const auto find = [&library]<typename Function>(Function *&function, const char *name) {
        function = reinterpret_cast<Function *>(library.resolve(name));
        if (!function) {
            throw DownloadError::connectionFailed(
                Localization::text(u"Модели не скачать: в системе нет библиотеки libcurl."));
        }
    };
    Curl curl;
    find(curl.global_init, "curl_global_init");
    find(curl.easy_init, "curl_easy_init");
    find(curl.easy_cleanup, "curl_easy_cleanup");
    find(curl.easy_setopt, "curl_easy_setopt");
    find(curl.easy_getinfo, "curl_easy_getinfo");
    find(curl.slist_append, "curl_slist_append");
    find(curl.slist_free_all, "curl_slist_free_all");
    find(curl.multi_init, "curl_multi_init");
    find(curl.multi_cleanup, "curl_multi_cleanup");
    find(curl.multi_add_handle, "curl_multi_add_handle");
    find(curl.multi_remove_handle, "curl_multi_remove_handle");
    find(curl.multi_perform, "curl_multi_perform");
    find(curl.multi_poll, "curl_multi_poll");
    find(curl.multi_wakeup, "curl_multi_wakeup");
    find(curl.multi_info_read, "curl_multi_info_read");
    curl.global_init(CURL_GLOBAL_DEFAULT);
    return curl;
}

} // namespace

const Curl &curl()
{
    static const Curl functions = loaded();
    return functions;
}

} // namespace orvane

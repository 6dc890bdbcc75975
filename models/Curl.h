#pragma once

#include <curl/curl.h>

namespace orvane {

/// The functions of libcurl that downloads use, by their names without "curl_". To link it would cost every
/// start of the program 9 ms, so it is loaded with the first download.
struct Curl
{
    decltype(&curl_global_init) global_init;
    decltype(&curl_easy_init) easy_init;
    decltype(&curl_easy_cleanup) easy_cleanup;
    decltype(&curl_easy_setopt) easy_setopt;
    decltype(&curl_easy_getinfo) easy_getinfo;
    decltype(&curl_slist_append) slist_append;
    decltype(&curl_slist_free_all) slist_free_all;
    decltype(&curl_multi_init) multi_init;
    decltype(&curl_multi_cleanup) multi_cleanup;
    decltype(&curl_multi_add_handle) multi_add_handle;
    decltype(&curl_multi_remove_handle) multi_remove_handle;
    decltype(&curl_multi_perform) multi_perform;
    decltype(&curl_multi_poll) multi_poll;
    decltype(&curl_multi_wakeup) multi_wakeup;
    decltype(&curl_multi_info_read) multi_info_read;
};

/// Ready for use. Throws DownloadError when the system has no libcurl. Any thread.
[[nodiscard]] const Curl &curl();

} // namespace orvane

#pragma once  // internal

#include <memory>

#include <curl/curl.h>

namespace torvel {

// The client library is loaded when the first session is made: with what it brings, it is half of what a
// process would otherwise load before it shows its first window. Its functions stand here under their own
// names, so that code in this namespace calls them as it would call those of a library that was linked.
#define TORVEL_CURL_FUNCTIONS(FUNCTION) \
    FUNCTION(curl_easy_cleanup)         \
    FUNCTION(curl_easy_getinfo)         \
    FUNCTION(curl_easy_init)            \
    FUNCTION(curl_easy_setopt)          \
    FUNCTION(curl_easy_strerror)        \
    FUNCTION(curl_getdate)              \
    FUNCTION(curl_global_init)          \
    FUNCTION(curl_multi_add_handle)     \
    FUNCTION(curl_multi_cleanup)        \
    FUNCTION(curl_multi_info_read)      \
    FUNCTION(curl_multi_init)           \
    FUNCTION(curl_multi_remove_handle)  \
    FUNCTION(curl_multi_setopt)         \
    FUNCTION(curl_multi_socket_action)  \
    FUNCTION(curl_share_init)           \
    FUNCTION(curl_share_setopt)
#define TORVEL_CURL_POINTER(name) [[gnu::visibility("hidden")]] extern decltype(&::name) name;
TORVEL_CURL_FUNCTIONS(TORVEL_CURL_POINTER)
#undef TORVEL_CURL_POINTER

// Comes before any of them; any thread, any number of times. Stops the process when there is no such library,
// as the system does for one that was linked.
void loadCurl();

struct CurlDeleter {
    void operator()(CURL* easy) const { curl_easy_cleanup(easy); }
};
using EasyHandle = std::unique_ptr<CURL, CurlDeleter>;

struct MultiDeleter {
    void operator()(CURLM* multi) const { curl_multi_cleanup(multi); }
};
using MultiHandle = std::unique_ptr<CURLM, MultiDeleter>;

}  // namespace torvel

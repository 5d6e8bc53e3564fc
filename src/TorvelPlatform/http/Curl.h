#pragma once  // internal

#include "TorvelPlatform/foundation/RuntimeLibrary.h"

#include <memory>

#include <curl/curl.h>

namespace torvel {

// The client library is loaded when the first session is made: with what it brings, it is half of what a
// process would otherwise load before it shows its first window.
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
TORVEL_CURL_FUNCTIONS(TORVEL_DECLARE_FUNCTION)

// Comes before any of them; any thread, any number of times.
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

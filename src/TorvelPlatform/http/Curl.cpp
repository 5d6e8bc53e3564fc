#include "TorvelPlatform/http/Curl.h"

namespace torvel {

TORVEL_CURL_FUNCTIONS(TORVEL_DEFINE_FUNCTION)

void loadCurl() {
    static const RuntimeFunction functions[] = {TORVEL_CURL_FUNCTIONS(TORVEL_RUNTIME_FUNCTION)};
    [[maybe_unused]] static const bool loaded = (loadFunctions("libcurl.so.4", functions), true);
}

}  // namespace torvel

#include "TorvelPlatform/http/Curl.h"

#include "TorvelPlatform/foundation/FatalError.h"

#include <dlfcn.h>

namespace torvel {

#define TORVEL_CURL_POINTER(name) decltype(&::name) name = nullptr;
TORVEL_CURL_FUNCTIONS(TORVEL_CURL_POINTER)
#undef TORVEL_CURL_POINTER

namespace {

template <class Function>
void find(void* library, const char* name, Function& function) {
    function = reinterpret_cast<Function>(::dlsym(library, name));
    if (function == nullptr) fatalError(::dlerror());
}

bool load() {
    void* const library = ::dlopen("libcurl.so.4", RTLD_LAZY | RTLD_LOCAL);  // stays loaded
    if (library == nullptr) fatalError(::dlerror());
#define TORVEL_CURL_FIND(name) find(library, #name, name);
    TORVEL_CURL_FUNCTIONS(TORVEL_CURL_FIND)
#undef TORVEL_CURL_FIND
    return true;
}

}  // namespace

void loadCurl() { [[maybe_unused]] static const bool loaded = load(); }

}  // namespace torvel

#include "TorvelPlatform/foundation/RuntimeLibrary.h"

#include "TorvelPlatform/foundation/FatalError.h"

#include <cstring>

#include <dlfcn.h>

namespace torvel {

void loadFunctions(const char* library, std::span<const RuntimeFunction> functions) {
    void* const handle = ::dlopen(library, RTLD_LAZY | RTLD_LOCAL);  // stays loaded
    for (const RuntimeFunction& function : functions) {
        void* const address = handle != nullptr ? ::dlsym(handle, function.name) : nullptr;
        if (address == nullptr) fatalError(::dlerror());
        std::memcpy(function.pointer, &address, sizeof address);
    }
}

}  // namespace torvel

#include "Fuzz.h"
#include "TorvelPlatform/foundation/FatalError.h"

#include <cstdint>
#include <cstdlib>

namespace {

struct Stopped {};

const bool survivesStops = [] {
    torvel::setFatalErrorHandler([](std::string_view) { throw Stopped(); });
    return true;
}();

}  // namespace

void mustHold(bool condition) {
    if (!condition) std::abort();
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    try {
        fuzz({reinterpret_cast<const char*>(bytes), size});
    } catch (const Stopped&) {
        // A stop that hostile input is meant to cause.
    }
    return 0;
}

#include "TorvelPlatform/foundation/MainThread.h"

#ifndef NDEBUG

#include "TorvelPlatform/foundation/Diagnostics.h"

#include <string>

#include <unistd.h>

namespace torvel {

void expectMainThread(const char* what, const std::source_location& where) {
    if (::gettid() != ::getpid())
        reportDiagnostic(std::string(what) + " is for the main thread alone", where);
}

}  // namespace torvel

#endif

#pragma once

#include <source_location>

namespace torvel {

#ifdef NDEBUG
inline void expectMainThread(const char*) {}
#else
// Debug builds report a diagnostic when `what`, which is not locked, is used outside the process's first
// thread.
void expectMainThread(const char* what, const std::source_location& where = std::source_location::current());
#endif

}  // namespace torvel
